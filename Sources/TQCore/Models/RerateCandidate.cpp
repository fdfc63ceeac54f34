#include "TQCore/Models/RerateCandidate.hpp"

#include "TQCore/ValueCodec.hpp"

namespace tq {

template <>
std::size_t hashOf(const RerateCandidate& candidate) {
  return hashOfValues(candidate.sidecarURL, candidate.sourceURL, candidate.reason);
}

}  // namespace tq
