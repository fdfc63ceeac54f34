#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

/// A description as people read it. Pure functions; texts are put in as they stand, without any Markdown escaping.
///
/// Some fields print whenever they hold a value, even an empty one, others only when they hold a character. That mix is
/// the format: people compare these files line by line.
struct MarkdownRenderer {
  /// The whole document.
  static std::string render(const DescriptionResult& result);

  /// A shot's block; `number` counts from 1.
  static std::string renderShot(std::size_t number, const Shot& shot);

  /// A person's block; `number` counts from 1 within the shot.
  static std::string renderPerson(std::size_t number, const Person& person);

  /// One line with its line feed.
  static std::string renderSetting(const Setting& setting);
  static std::string renderPalette(const ColorPalette& palette);

  /// One phrase without a line feed.
  static std::string paletteLine(const std::vector<std::string>& colors);
  static std::string hairLine(const PersonHair& hair);
  static std::string clothingLine(const PersonClothing& clothing);
};

}  // namespace tq
