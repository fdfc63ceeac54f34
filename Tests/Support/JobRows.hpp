#pragma once

#include <memory>
#include <string>
#include <vector>

#include "TQPipeline/JobList.hpp"

namespace tq::test {

/// A new job of that status.
inline Job jobOf(JobStatus status, const std::string& clip = "/clips/a.mov") {
  Job job;
  job.id = UUID::random();
  job.status = status;
  job.sourceURL = clip;
  return job;
}

/// The jobs as rows of a list.
inline std::vector<JobList::Row> rowsOf(const std::vector<Job>& jobs) {
  std::vector<JobList::Row> rows;
  for (const Job& job : jobs)
    rows.push_back(std::make_shared<const Job>(job));
  return rows;
}

}  // namespace tq::test
