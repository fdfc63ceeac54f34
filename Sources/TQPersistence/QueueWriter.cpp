#include "TQPersistence/QueueWriter.hpp"

#include <exception>
#include <utility>

#include "TQCore/TQError.hpp"

namespace tq {

QueueWriter::QueueWriter(QueueStore store, Executor owner, std::function<Jobs()> current,
                         std::function<void(const std::string& problem)> onFailure)
    : store_(std::move(store)),
      owner_(std::move(owner)),
      current_(std::move(current)),
      onFailure_(std::move(onFailure)) {}

QueueWriter::~QueueWriter() {
  finish();
}

void QueueWriter::noteChange() {
  isChanged_ = true;
  beginWrite();
}

void QueueWriter::release() {
  --holds_;
  beginWrite();
}

void QueueWriter::finish() {
  for (beginWrite(); isWriting_; beginWrite()) {
    thread_.flush();
    endWrite(*outcome_);
  }
}

/// News of the end is addressed by the outcome: after `finish` has taken it, the same news arrives once more, late.
void QueueWriter::beginWrite() {
  if (isWriting_ || !isChanged_ || holds_ > 0) return;
  isChanged_ = false;
  isWriting_ = true;
  outcome_ = std::make_shared<std::string>();
  thread_.post([this, jobs = current_(), outcome = outcome_]() mutable {
    *outcome = write(jobs);
    jobs.clear();
    owner_.post([this, outcome = std::move(outcome)] {
      if (outcome_ == outcome) endWrite(*outcome);
    });
  });
}

void QueueWriter::endWrite(const std::string& problem) {
  const std::string text = problem;  // the outcome it is part of ends here
  isWriting_ = false;
  outcome_.reset();
  if (!text.empty()) onFailure_(text);
  beginWrite();
}

std::string QueueWriter::write(const Jobs& jobs) const {
  try {
    store_.save(jobs);
    return "";
  } catch (const std::exception& error) {
    return userFacingDescription(error);
  }
}

}  // namespace tq
