#include "TarquelApp/JobDetail.hpp"

#include <QVariantMap>
#include <chrono>
#include <exception>
#include <utility>

#include "TQCore/RecordJSON.hpp"
#include "TQDescription/Library/SourceTabFormatter.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TarquelApp/JobWords.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

using namespace std::chrono_literals;

/// A member of two jobs, either of which may be missing, is the same. Large parts are the same object most of the time.
template <class Member>
bool differ(const JobList::Row& one, const JobList::Row& other, Member Job::*member) {
  if (!one || !other) return one != other;
  return (*one).*member != (*other).*member;
}

}  // namespace

JobDetail::JobDetail(AppState& app, FrameShelf& shelf, std::shared_ptr<const Clock> clock, QObject* parent)
    : QObject(parent), app_(app), shelf_(shelf), clock_(std::move(clock)) {
  connect(&app, &AppState::selectedJobIDChanged, this, &JobDetail::follow);
  connect(app.jobs(), &QAbstractItemModel::rowsInserted, this, &JobDetail::follow);
  connect(app.jobs(), &QAbstractItemModel::rowsRemoved, this, &JobDetail::followSoon);
  connect(app.jobs(), &JobListModel::jobReplaced, this, [this](const UUID& id) {
    if (job_ && job_->id == id) follow();
  });
  second_.setInterval(1s);
  connect(&second_, &QTimer::timeout, this, &JobDetail::elapsedChanged);
  follow();
}

void JobDetail::follow() {
  const auto& selected = app_.selection();
  const auto row = selected ? app_.jobList().rowOf(*selected) : std::nullopt;
  show(row ? app_.jobList().rows()[*row] : nullptr);
}

/// Rows are told of as gone while the list still has their jobs; a look is right once it has let them go.
void JobDetail::followSoon() {
  if (std::exchange(willFollow_, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        willFollow_ = false;
        follow();
      },
      Qt::QueuedConnection);
}

void JobDetail::show(JobList::Row job) {
  if (job == job_) return;
  const JobList::Row before = std::exchange(job_, std::move(job));
  const auto changed = [&](auto... members) { return (differ(before, job_, members) || ...); };
  const bool isAnother = changed(&Job::id);
  const bool stateIsNew = isAnother || changed(&Job::status, &Job::error);
  const bool resultIsNew = isAnother || changed(&Job::result);
  if (resultIsNew) {
    markdown_.forget();
    json_.forget();
  }
  const bool rawResponseIsNew = isAnother || changed(&Job::rawResponse);
  if (rawResponseIsNew) rawResponse_.forget();
  const bool framesAreNew = isAnother || changed(&Job::frames);
  if (framesAreNew) framesNumber_ = shelf_.put(job_ ? job_->frames : FrameShelf::Frames());
  const bool isCounting = job_ && job_->status == JobStatus::calling;
  if (!isCounting)
    second_.stop();
  else if (!second_.isActive())
    second_.start();

  if (isAnother || changed(&Job::sourceURL)) Q_EMIT identityChanged();
  if (stateIsNew) Q_EMIT stateChanged();
  if (stateIsNew) Q_EMIT elapsedChanged();
  if (isAnother || changed(&Job::progress)) Q_EMIT progressChanged();
  if (resultIsNew || changed(&Job::engineSnapshot)) Q_EMIT engineChanged();
  if (resultIsNew) Q_EMIT resultChanged();
  if (rawResponseIsNew) Q_EMIT rawResponseChanged();
  if (framesAreNew) Q_EMIT framesChanged();
}

QString JobDetail::jobID() const {
  return job_ ? qtText(job_->id.text()) : QString();
}

QString JobDetail::fileName() const {
  return job_ ? qtText(job_->sourceURL.filename().native()) : QString();
}

QUrl JobDetail::sourceURL() const {
  return job_ ? qtFileURL(job_->sourceURL) : QUrl();
}

QString JobDetail::status() const {
  return job_ ? qtText(rawValue(job_->status)) : QString();
}

QString JobDetail::statusLabel() const {
  return job_ ? qtText(wordsOf(job_->status).label) : QString();
}

QString JobDetail::waitingLabel() const {
  return job_ ? qtText(wordsOf(job_->status).waiting) : QString();
}

QString JobDetail::error() const {
  return job_ ? qtText(job_->error.value_or("")) : QString();
}

QString JobDetail::elapsed() const {
  if (!job_ || job_->status != JobStatus::calling) return {};
  return qtText(elapsedText(clock_->now() - job_->createdAt));
}

QString JobDetail::engineSubtitle() const {
  return job_ ? qtText(engineSubtitleOf(*job_)) : QString();
}

/// A result is about as long as the answer that it was read from.
std::size_t JobDetail::answerBytes() const {
  return job_ && job_->rawResponse ? job_->rawResponse->size() : 0;
}

QString JobDetail::markdown() const {
  if (!hasResult()) return {};
  return markdown_.read(answerBytes(), [result = job_->result] { return qtText(MarkdownRenderer::render(*result)); });
}

QString JobDetail::json() const {
  if (!hasResult()) return {};
  return json_.read(answerBytes(), [result = job_->result] {
    try {
      return qtText(writeJSON(encode(*result), JSONLayout::pretty));
    } catch (const std::exception&) {
      return QStringLiteral("<could not render JSON>");
    }
  });
}

QVariantList JobDetail::sourceRows() const {
  QVariantList rows;
  if (!hasResult()) return rows;
  for (const SourceTabFormatter::Row& row : SourceTabFormatter::rows(*job_->result, job_->sourceURL))
    rows.append(
        QVariantMap{{QStringLiteral("label"), qtText(row.label)}, {QStringLiteral("value"), qtText(row.value)}});
  return rows;
}

QString JobDetail::rawResponse() const {
  if (!hasRawResponse()) return {};
  return rawResponse_.read(answerBytes(), [response = job_->rawResponse] { return qtText(*response); });
}

QStringList JobDetail::timecodes() const {
  QStringList texts;
  if (job_ && job_->frames)
    for (const ExtractedFrame& frame : *job_->frames)
      texts.append(qtText(frame.timecode.formatted()));
  return texts;
}

QString JobDetail::frameSource() const {
  return QStringLiteral("image://frames/%1/").arg(framesNumber_);
}

}  // namespace tq
