#include "TarquelApp/JobListModel.hpp"

#include <QList>
#include <QUrl>
#include <array>
#include <string>

#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

struct StatusWords {
  std::string_view label;
  std::string_view section;
  bool isWorking;
  bool canRetry;
  bool canCancel;
};

/// In the order of `JobStatus`.
constexpr std::array<StatusWords, 7> statusWords{{
    {.label = "Queued", .section = "Queued", .isWorking = false, .canRetry = false, .canCancel = true},
    {.label = "Extracting frames", .section = "Running", .isWorking = true, .canRetry = false, .canCancel = true},
    {.label = "Calling vision model", .section = "Running", .isWorking = true, .canRetry = false, .canCancel = true},
    {.label = "Writing sidecar", .section = "Running", .isWorking = true, .canRetry = false, .canCancel = true},
    {.label = "Done", .section = "Done", .isWorking = false, .canRetry = false, .canCancel = false},
    {.label = "Failed", .section = "Failed", .isWorking = false, .canRetry = true, .canCancel = false},
    {.label = "Cancelled", .section = "Failed", .isWorking = false, .canRetry = true, .canCancel = false},
}};
static_assert(statusWords.size() == rawValues<JobStatus>.size());

const StatusWords& wordsOf(const Job& job) {
  return statusWords[static_cast<std::size_t>(job.status)];
}

std::string_view badgeName(const Job& job) {
  switch (job.badge().kind) {
    case JobBadge::Kind::none: return "none";
    case JobBadge::Kind::refused: return "refused";
    case JobBadge::Kind::needsReview: return "needsReview";
  }
  return "none";
}

std::string badgeHelpText(const Job& job) {
  const JobBadge badge = job.badge();
  switch (badge.kind) {
    case JobBadge::Kind::none: return "";
    case JobBadge::Kind::refused: return "Model refused";
    case JobBadge::Kind::needsReview:
      return badge.reason.value_or("").empty() ? "Needs review" : "Needs review — " + *badge.reason;
  }
  return "";
}

std::string oneLineOf(const Job& job) {
  if (job.status != JobStatus::done || !job.result) return "";
  return job.result->global.overallSummaryOneLine.value_or("");
}

struct RoleEntry {
  JobListModel::Role role;
  const char* name;
  QVariant (*read)(const Job& job);
};

constexpr auto roleTable = std::to_array<RoleEntry>({
    {JobListModel::jobID, "jobID", [](const Job& job) -> QVariant { return qtText(job.id.text()); }},
    {JobListModel::sourceURL, "sourceURL", [](const Job& job) -> QVariant { return qtFileURL(job.sourceURL); }},
    {JobListModel::fileName, "fileName",
     [](const Job& job) -> QVariant { return qtText(job.sourceURL.filename().native()); }},
    {JobListModel::status, "status", [](const Job& job) -> QVariant { return qtText(rawValue(job.status)); }},
    {JobListModel::statusLabel, "statusLabel", [](const Job& job) -> QVariant { return qtText(wordsOf(job).label); }},
    {JobListModel::section, "section", [](const Job& job) -> QVariant { return qtText(wordsOf(job).section); }},
    {JobListModel::progress, "progress", [](const Job& job) -> QVariant { return job.progress; }},
    {JobListModel::isWorking, "isWorking", [](const Job& job) -> QVariant { return wordsOf(job).isWorking; }},
    {JobListModel::error, "error", [](const Job& job) -> QVariant { return qtText(job.error.value_or("")); }},
    {JobListModel::badge, "badge", [](const Job& job) -> QVariant { return qtText(badgeName(job)); }},
    {JobListModel::badgeHelp, "badgeHelp", [](const Job& job) -> QVariant { return qtText(badgeHelpText(job)); }},
    {JobListModel::modelId, "modelId",
     [](const Job& job) -> QVariant { return job.engineSnapshot ? qtText(job.engineSnapshot->modelId) : QString(); }},
    {JobListModel::oneLine, "oneLine", [](const Job& job) -> QVariant { return qtText(oneLineOf(job)); }},
    {JobListModel::canRetry, "canRetry", [](const Job& job) -> QVariant { return wordsOf(job).canRetry; }},
    {JobListModel::canCancel, "canCancel", [](const Job& job) -> QVariant { return wordsOf(job).canCancel; }},
});

const RoleEntry* entryOf(int role) {
  const auto index = static_cast<std::size_t>(role - JobListModel::jobID);
  return role >= JobListModel::jobID && index < roleTable.size() ? &roleTable[index] : nullptr;
}

}  // namespace

void JobListModel::show(const JobList& list) {
  beginResetModel();
  list_ = &list;
  endResetModel();
}

int JobListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() || !list_ ? 0 : static_cast<int>(list_->size());
}

QVariant JobListModel::data(const QModelIndex& index, int role) const {
  const RoleEntry* entry = entryOf(role == Qt::DisplayRole ? fileName : role);
  if (!entry || !hasIndex(index.row(), index.column())) return {};
  return entry->read((*list_)[static_cast<std::size_t>(index.row())]);
}

QHash<int, QByteArray> JobListModel::roleNames() const {
  QHash<int, QByteArray> names;
  for (const RoleEntry& entry : roleTable)
    names.insert(entry.role, entry.name);
  return names;
}

void JobListModel::rowsWillBeAppended(std::size_t count) {
  const int end = rowCount();
  beginInsertRows({}, end, end + static_cast<int>(count) - 1);
}

void JobListModel::rowsWillBeRemoved(std::size_t first, std::size_t last) {
  beginRemoveRows({}, static_cast<int>(first), static_cast<int>(last));
}

void JobListModel::rowWasReplaced(std::size_t row, const Job& before, const Job& after) {
  QList<int> changed;
  for (const RoleEntry& entry : roleTable)
    if (entry.read(before) != entry.read(after)) changed.append(entry.role);
  const QModelIndex place = index(static_cast<int>(row));
  if (!changed.isEmpty()) Q_EMIT dataChanged(place, place, changed);
}

}  // namespace tq
