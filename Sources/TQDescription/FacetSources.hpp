#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TQDescription/Facets.hpp"

namespace tq {

using GlobalList = std::optional<std::vector<std::string>> GlobalSummary::*;
using ShotText = std::optional<std::string> Shot::*;
using SettingText = std::optional<std::string> Setting::*;

/// Where a field's values stand: in one list of the whole clip, or in one text of every shot.
struct FacetSource {
  std::string_view label;
  std::variant<GlobalList, ShotText, SettingText> place;
};

const FacetSource& sourceOf(FacetField field);

/// Calls `visit` with each text that the field has in the record, as it stands there.
template <class Visit>
void forEachFacetText(FacetField field, const DescriptionResult& record, Visit visit) {
  struct Places {
    const DescriptionResult& in;
    Visit& visit;

    void operator()(GlobalList list) const {
      if (const auto& texts = in.global.*list)
        for (const std::string& text : *texts)
          visit(text);
    }
    void operator()(ShotText member) const {
      for (const Shot& shot : in.shots)
        if (const auto& text = shot.*member) visit(*text);
    }
    void operator()(SettingText member) const {
      for (const Shot& shot : in.shots)
        if (!shot.setting)
          continue;
        else if (const auto& text = (*shot.setting).*member)
          visit(*text);
    }
  };
  std::visit(Places{record, visit}, sourceOf(field).place);
}

}  // namespace tq
