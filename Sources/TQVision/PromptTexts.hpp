#pragma once

#include <string_view>

/// The fixed texts of the prompts, as the model reads them. They are a contract: `DescriptionBuilder` parses the field
/// names and the vocabularies that they ask for. A word between two @ signs names the vocabulary that is put in its
/// place.
namespace tq::prompt_texts {

extern const std::string_view standardHead;      ///< ends with an empty line
extern const std::string_view unrestrictedHead;  ///< ends with an empty line
extern const std::string_view sharedTrailer;
extern const std::string_view transcriptOpening;
extern const std::string_view transcriptClosing;
extern const std::string_view schema;

}  // namespace tq::prompt_texts
