#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QVariantList>
#include <memory>

#include "TQPlatform/Concurrency/Clock.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/FrameShelf.hpp"
#include "TarquelApp/LateText.hpp"

namespace tq {

/// What the pane of the selected job shows. Follows the selection and every change of that job, and tells the view only
/// of what has become different. The texts of a result are made when somebody looks at them; long ones arrive a moment
/// later.
class JobDetail : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window has one.")
  Q_PROPERTY(bool exists READ exists NOTIFY identityChanged)
  Q_PROPERTY(QString jobID READ jobID NOTIFY identityChanged)
  Q_PROPERTY(QString fileName READ fileName NOTIFY identityChanged)
  Q_PROPERTY(QUrl sourceURL READ sourceURL NOTIFY identityChanged)
  Q_PROPERTY(QString status READ status NOTIFY stateChanged)
  Q_PROPERTY(QString statusLabel READ statusLabel NOTIFY stateChanged)
  Q_PROPERTY(QString waitingLabel READ waitingLabel NOTIFY stateChanged)
  Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
  Q_PROPERTY(QString elapsed READ elapsed NOTIFY elapsedChanged)
  Q_PROPERTY(QString engineSubtitle READ engineSubtitle NOTIFY engineChanged)
  Q_PROPERTY(QString error READ error NOTIFY stateChanged)
  Q_PROPERTY(bool hasResult READ hasResult NOTIFY resultChanged)
  Q_PROPERTY(QString markdown READ markdown NOTIFY resultChanged)
  Q_PROPERTY(QString json READ json NOTIFY resultChanged)
  Q_PROPERTY(QVariantList sourceRows READ sourceRows NOTIFY resultChanged)
  Q_PROPERTY(bool hasRawResponse READ hasRawResponse NOTIFY rawResponseChanged)
  Q_PROPERTY(QString rawResponse READ rawResponse NOTIFY rawResponseChanged)
  Q_PROPERTY(QStringList timecodes READ timecodes NOTIFY framesChanged)
  Q_PROPERTY(QString frameSource READ frameSource NOTIFY framesChanged)

 public:
  /// `app` and `shelf` outlive this object. The frames of the job lie on the shelf while it is shown.
  JobDetail(AppState& app, FrameShelf& shelf, std::shared_ptr<const Clock> clock, QObject* parent = nullptr);

  /// The selection names a job of the queue.
  bool exists() const { return job_ != nullptr; }
  QString jobID() const;
  QString fileName() const;
  QUrl sourceURL() const;

  QString status() const;        ///< raw value of `JobStatus`; empty without a job, as are all texts
  QString statusLabel() const;   ///< "Extracting frames"
  QString waitingLabel() const;  ///< "Extracting frames…"; empty for a job that has ended
  double progress() const { return job_ ? job_->progress : 0; }
  QString error() const;

  /// "(1:05 elapsed)" since the job was made, for a job that waits for the model; else empty.
  QString elapsed() const;

  /// As `engineSubtitleOf`.
  QString engineSubtitle() const;

  bool hasResult() const { return job_ && job_->result; }
  QString markdown() const;
  QString json() const;
  QVariantList sourceRows() const;  ///< maps of "label" and "value"

  bool hasRawResponse() const { return job_ && job_->rawResponse; }
  QString rawResponse() const;

  /// One for each frame.
  QStringList timecodes() const;

  /// Followed by the index of a frame, the address of its picture.
  QString frameSource() const;

 Q_SIGNALS:
  void identityChanged();
  void stateChanged();
  void progressChanged();
  void elapsedChanged();
  void engineChanged();
  void resultChanged();
  void rawResponseChanged();
  void framesChanged();

 private:
  void follow();
  void followSoon();
  void show(JobList::Row job);
  std::size_t answerBytes() const;

  AppState& app_;
  FrameShelf& shelf_;
  const std::shared_ptr<const Clock> clock_;
  JobList::Row job_;
  std::uint64_t framesNumber_ = 0;
  mutable LateText markdown_{*this, texts_, [this] { Q_EMIT resultChanged(); }};
  mutable LateText json_{*this, texts_, [this] { Q_EMIT resultChanged(); }};
  mutable LateText rawResponse_{*this, texts_, [this] { Q_EMIT rawResponseChanged(); }};
  QTimer second_{this};
  bool willFollow_ = false;
  mutable SerialQueue texts_;  // last: its items use all of the above
};

}  // namespace tq
