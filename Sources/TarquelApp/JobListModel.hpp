#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <array>
#include <vector>

#include "TQPipeline/JobList.hpp"
#include "TarquelApp/JobWords.hpp"

namespace tq {

/// The queue's jobs as the sidebar shows them: section after section, and within each in order of entry. Tells its view
/// the smallest change: a tick of progress is one role of one row, a job that goes from section to section is one row
/// that moves.
class JobListModel : public QAbstractListModel, public JobList::Observer {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The queue has one.")
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(bool hasDone READ hasDone NOTIFY hasDoneChanged)

 public:
  enum Role {
    jobID = Qt::UserRole,  ///< text of the job's UUID
    sourceURL,             ///< file URL of the clip
    uriList,               ///< the same as other programs take it, percent-encoded (text/uri-list, RFC 2483)
    fileName,
    status,       ///< raw value of `JobStatus`
    statusLabel,  ///< the status in words
    section,      ///< title of the group in which the sidebar shows the job
    progress,     ///< 0 to 1
    isWorking,    ///< the job has a slot, and its progress means something
    error,        ///< empty: none
    badge,        ///< "none", "refused" or "needsReview"
    badgeHelp,    ///< empty for "none"
    modelId,      ///< empty: unknown
    oneLine,      ///< what a finished clip shows, in one line; empty: nothing to say
    canRetry,
    canCancel,
  };
  Q_ENUM(Role)

  using QAbstractListModel::QAbstractListModel;

  /// Shows this list, which outlives the model or its use. Every change of it is told to this model as its observer.
  void show(const JobList& list);

  int count() const { return static_cast<int>(order_.size()); }

  /// Some job is done, so that there is something to clear.
  bool hasDone() const;

  /// The row of a job, -1 when it is not here.
  Q_INVOKABLE int rowOf(const QString& ofJob) const;

  /// One role of a row by its name; undefined when there is no such row.
  Q_INVOKABLE QVariant value(int row, const QString& role) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  void rowsWereAppended() override;
  void rowsWillBeRemoved(JobStatus gone) override;
  void rowsWereRemoved() override;
  void rowWasReplaced(std::size_t row, const Job& before, const Job& after) override;

 Q_SIGNALS:
  void countChanged();
  void hasDoneChanged();
  /// A job goes to another section now, which does not always move its row. Before any row or role has changed.
  void sectionWillChange(const QString& jobID);
  /// Anything of this job is another one now, also what no row shows.
  void jobReplaced(const tq::UUID& id);

 private:
  static constexpr std::size_t sectionCount = rawValues<QueueSection>.size();

  const Job& jobAt(int row) const { return (*list_)[order_[static_cast<std::size_t>(row)]]; }
  std::size_t beginOf(QueueSection group) const;
  std::size_t placeOf(std::size_t entry, QueueSection group) const;
  void insert(QueueSection group, const std::vector<std::size_t>& entries);
  void move(std::size_t entry, QueueSection from, QueueSection to);
  void grow(QueueSection group, std::ptrdiff_t change);

  const JobList* list_ = nullptr;
  std::vector<std::size_t> order_;                ///< entries of the list in the order of this model
  std::array<std::size_t, sectionCount> ends_{};  ///< behind the last row of each section
};

}  // namespace tq
