#pragma once

#include <QAbstractListModel>

#include "TQPipeline/JobList.hpp"

namespace tq {

/// The queue's rows for a view. Tells it the smallest change: a tick of progress is one role of one row.
class JobListModel : public QAbstractListModel, public JobList::Observer {
  Q_OBJECT

 public:
  enum Role {
    jobID = Qt::UserRole,  ///< text of the job's UUID
    sourceURL,             ///< file URL of the clip
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

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  void rowsWillBeAppended(std::size_t count) override;
  void rowsWereAppended() override { endInsertRows(); }
  void rowsWillBeRemoved(std::size_t first, std::size_t last) override;
  void rowsWereRemoved() override { endRemoveRows(); }
  void rowWasReplaced(std::size_t row, const Job& before, const Job& after) override;

 private:
  const JobList* list_ = nullptr;
};

}  // namespace tq
