#include "TarquelApp/JobListModel.hpp"

#include <QList>
#include <QUrl>
#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

/// A row shows one line of a text, and laying out a longer one costs its whole length.
QString lineOf(std::string_view text) {
  constexpr std::size_t most = 1000;
  if (text.size() <= most) return qtText(text);
  std::size_t end = most;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
    --end;
  return qtText(text.substr(0, end)) + u'\u2026';
}

struct RoleEntry {
  JobListModel::Role role;
  std::string_view name;
  QVariant (*read)(const Job& job);
};

constexpr auto roleTable = std::to_array<RoleEntry>({
    {JobListModel::jobID, "jobID", [](const Job& job) -> QVariant { return qtText(job.id.text()); }},
    {JobListModel::sourceURL, "sourceURL", [](const Job& job) -> QVariant { return qtFileURL(job.sourceURL); }},
    {JobListModel::uriList, "uriList",
     [](const Job& job) -> QVariant {
       return QString::fromLatin1(qtFileURL(job.sourceURL).toEncoded() + QByteArrayLiteral("\r\n"));
     }},
    {JobListModel::fileName, "fileName",
     [](const Job& job) -> QVariant { return qtText(job.sourceURL.filename().native()); }},
    {JobListModel::status, "status", [](const Job& job) -> QVariant { return qtText(rawValue(job.status)); }},
    {JobListModel::statusLabel, "statusLabel",
     [](const Job& job) -> QVariant { return qtText(wordsOf(job.status).label); }},
    {JobListModel::section, "section",
     [](const Job& job) -> QVariant { return qtText(rawValue(wordsOf(job.status).section)); }},
    {JobListModel::progress, "progress", [](const Job& job) -> QVariant { return job.progress; }},
    {JobListModel::isWorking, "isWorking", [](const Job& job) -> QVariant { return wordsOf(job.status).isWorking; }},
    {JobListModel::error, "error", [](const Job& job) -> QVariant { return lineOf(job.error.value_or("")); }},
    {JobListModel::badge, "badge", [](const Job& job) -> QVariant { return qtText(nameOf(job.badge().kind)); }},
    {JobListModel::badgeHelp, "badgeHelp", [](const Job& job) -> QVariant { return lineOf(helpTextOf(job.badge())); }},
    {JobListModel::modelId, "modelId",
     [](const Job& job) -> QVariant { return job.engineSnapshot ? qtText(job.engineSnapshot->modelId) : QString(); }},
    {JobListModel::oneLine, "oneLine", [](const Job& job) -> QVariant { return lineOf(oneLineOf(job)); }},
    {JobListModel::canRetry, "canRetry", [](const Job& job) -> QVariant { return wordsOf(job.status).canRetry; }},
    {JobListModel::canCancel, "canCancel", [](const Job& job) -> QVariant { return wordsOf(job.status).canCancel; }},
});

const RoleEntry* entryOf(int role) {
  const auto index = static_cast<std::size_t>(role - JobListModel::jobID);
  return role >= JobListModel::jobID && index < roleTable.size() ? &roleTable[index] : nullptr;
}

/// Made of the clip alone.
bool isOfClip(JobListModel::Role role) {
  return role == JobListModel::jobID || role == JobListModel::sourceURL || role == JobListModel::uriList ||
         role == JobListModel::fileName;
}

}  // namespace

void JobListModel::show(const JobList& list) {
  beginResetModel();
  list_ = &list;
  order_.clear();
  ends_.fill(0);
  endResetModel();
  rowsWereAppended();
}

bool JobListModel::hasDone() const {
  return ends_[static_cast<std::size_t>(QueueSection::done)] > beginOf(QueueSection::done);
}

int JobListModel::rowOf(const QString& ofJob) const {
  const auto id = UUID::parse(textOf(ofJob));
  const auto entry = id && list_ ? list_->rowOf(*id) : std::nullopt;
  if (!entry) return -1;
  const std::size_t place = placeOf(*entry, wordsOf((*list_)[*entry].status).section);
  // While rows go, the list may still have a job that is here no more.
  return place < order_.size() && order_[place] == *entry ? static_cast<int>(place) : -1;
}

QVariant JobListModel::value(int row, const QString& role) const {
  const auto entry = std::ranges::find(roleTable, textOf(role), &RoleEntry::name);
  return entry == roleTable.end() ? QVariant() : data(index(row), entry->role);
}

int JobListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QVariant JobListModel::data(const QModelIndex& index, int role) const {
  const RoleEntry* entry = entryOf(role == Qt::DisplayRole ? fileName : role);
  return entry && hasIndex(index.row(), index.column()) ? entry->read(jobAt(index.row())) : QVariant();
}

QHash<int, QByteArray> JobListModel::roleNames() const {
  QHash<int, QByteArray> names;
  for (const RoleEntry& entry : roleTable)
    names.insert(entry.role, QByteArray(entry.name.data(), static_cast<qsizetype>(entry.name.size())));
  return names;
}

void JobListModel::rowsWereAppended() {
  std::array<std::vector<std::size_t>, sectionCount> arrivals;
  for (std::size_t entry = order_.size(); entry < list_->size(); ++entry)
    arrivals[static_cast<std::size_t>(wordsOf((*list_)[entry].status).section)].push_back(entry);
  const bool hadDone = hasDone();
  for (std::size_t group = 0; group < sectionCount; ++group)
    insert(static_cast<QueueSection>(group), arrivals[group]);
  Q_EMIT countChanged();
  if (hasDone() != hadDone) Q_EMIT hasDoneChanged();
}

/// All is told while the list still has its old rows, since the entries that stay keep their numbers until then. Rows
/// that stand together go together: those that are done are a section of their own, and one removal.
void JobListModel::rowsWillBeRemoved(JobStatus gone) {
  const QueueSection group = wordsOf(gone).section;
  const bool hadDone = hasDone();
  const auto goes = [&](std::size_t row) { return (*list_)[order_[row]].status == gone; };
  const std::size_t begin = beginOf(group);
  for (std::size_t end = ends_[static_cast<std::size_t>(group)]; end > begin; --end) {
    if (!goes(end - 1)) continue;
    std::size_t first = end - 1;
    while (first > begin && goes(first - 1))
      --first;
    beginRemoveRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
    order_.erase(order_.begin() + static_cast<std::ptrdiff_t>(first),
                 order_.begin() + static_cast<std::ptrdiff_t>(end));
    grow(group, -static_cast<std::ptrdiff_t>(end - first));
    endRemoveRows();
    end = first + 1;
  }
  if (hasDone() != hadDone) Q_EMIT hasDoneChanged();
}

/// The entries that stayed have moved up; their order among each other is what it was.
void JobListModel::rowsWereRemoved() {
  std::vector<std::size_t> places(order_.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  std::ranges::sort(places, {}, [this](std::size_t place) { return order_[place]; });
  for (std::size_t entry = 0; entry < places.size(); ++entry)
    order_[places[entry]] = entry;
  Q_EMIT countChanged();
}

void JobListModel::rowWasReplaced(std::size_t row, const Job& before, const Job& after) {
  const QueueSection from = wordsOf(before.status).section;
  const QueueSection to = wordsOf(after.status).section;
  if (from != to) {
    Q_EMIT sectionWillChange(qtText(after.id.text()));
    move(row, from, to);
  }
  // The one is a copy of the other, but for a few members: most roles need not be made to be compared.
  const bool isSameClip = before.id == after.id && before.sourceURL == after.sourceURL;
  QList<int> changed;
  for (const RoleEntry& entry : roleTable)
    if (!(isSameClip && isOfClip(entry.role)) && entry.read(before) != entry.read(after)) changed.append(entry.role);
  const QModelIndex place = index(static_cast<int>(placeOf(row, to)));
  if (!changed.isEmpty()) Q_EMIT dataChanged(place, place, changed);
  Q_EMIT jobReplaced(after.id);
}

std::size_t JobListModel::beginOf(QueueSection group) const {
  return group == QueueSection{} ? 0 : ends_[static_cast<std::size_t>(group) - 1];
}

/// Where that entry of the list stands, or would stand, within a section.
std::size_t JobListModel::placeOf(std::size_t entry, QueueSection group) const {
  const auto begin = order_.begin() + static_cast<std::ptrdiff_t>(beginOf(group));
  const auto end = order_.begin() + static_cast<std::ptrdiff_t>(ends_[static_cast<std::size_t>(group)]);
  return static_cast<std::size_t>(std::lower_bound(begin, end, entry) - order_.begin());
}

/// New entries are younger than all others of their section.
void JobListModel::insert(QueueSection group, const std::vector<std::size_t>& entries) {
  if (entries.empty()) return;
  const std::size_t first = ends_[static_cast<std::size_t>(group)];
  beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + entries.size()) - 1);
  order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(first), entries.begin(), entries.end());
  grow(group, static_cast<std::ptrdiff_t>(entries.size()));
  endInsertRows();
}

void JobListModel::move(std::size_t entry, QueueSection from, QueueSection to) {
  const bool hadDone = hasDone();
  const std::size_t oldRow = placeOf(entry, from);
  const std::size_t newRow = placeOf(entry, to);  // counted with the row still in its old place, as Qt wants it
  const bool changesPlace = newRow != oldRow && newRow != oldRow + 1;
  if (changesPlace) beginMoveRows({}, static_cast<int>(oldRow), static_cast<int>(oldRow), {}, static_cast<int>(newRow));
  const auto at = [this](std::size_t row) { return order_.begin() + static_cast<std::ptrdiff_t>(row); };
  if (newRow > oldRow)
    std::rotate(at(oldRow), at(oldRow + 1), at(newRow));
  else
    std::rotate(at(newRow), at(oldRow), at(oldRow + 1));
  grow(from, -1);
  grow(to, 1);
  if (changesPlace) endMoveRows();
  if (hasDone() != hadDone) Q_EMIT hasDoneChanged();
}

/// A section has got more or fewer rows; those behind it have shifted.
void JobListModel::grow(QueueSection group, std::ptrdiff_t change) {
  for (auto end = static_cast<std::size_t>(group); end < sectionCount; ++end)
    ends_[end] = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(ends_[end]) + change);
}

}  // namespace tq
