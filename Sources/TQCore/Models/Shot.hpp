#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TQCore/RecordJSON.hpp"

namespace tq {

// What a model says of one frame. Nearly every field is optional, and the fields with a vocabulary are free text: a
// model's off-list word must survive. The vocabularies feed the prompt and the facets only.

struct PersonHair {
  std::optional<std::string> color;
  std::optional<std::string> length;
  std::optional<std::string> style;

  bool operator==(const PersonHair&) const = default;
};
TQ_RECORD(PersonHair);

struct PersonClothing {
  std::optional<std::string> top;
  std::optional<std::string> bottom;
  std::optional<std::vector<std::string>> accessories;
  std::optional<std::string> overallStyle;

  bool operator==(const PersonClothing&) const = default;
};
TQ_RECORD(PersonClothing);

struct Person {
  std::optional<std::string> approximateAgeRange;  ///< such as "25-35"
  std::optional<std::string> perceivedGenderPresentation;
  std::optional<std::string> skinTone;
  std::optional<PersonHair> hair;
  std::optional<std::string> eyes;
  std::optional<std::string> pose;
  std::optional<std::string> expression;
  std::optional<std::string> perceivedMood;  ///< vocabulary `PerceivedMood`
  std::optional<double> moodConfidence;      ///< 0 to 1
  std::optional<PersonClothing> clothing;

  bool operator==(const Person&) const = default;
};
TQ_RECORD(Person);

struct Setting {
  std::optional<std::string> locationType;  ///< vocabulary `LocationType`
  std::optional<std::string> environment;
  std::optional<std::string> timeOfDay;  ///< vocabulary `TimeOfDay`
  std::optional<std::string> weather;
  std::optional<std::string> lighting;  ///< vocabulary `Lighting`

  bool operator==(const Setting&) const = default;
};
TQ_RECORD(Setting);

struct ColorPalette {
  std::vector<std::string> dominant;  ///< colours as #RRGGBB
  std::optional<std::string> description;

  bool operator==(const ColorPalette&) const = default;
};
TQ_RECORD(ColorPalette);

/// A face found on the machine itself. Fractions of the image's width and height, origin at the top-left corner.
struct FaceBox {
  double x = 0;  ///< left edge
  double y = 0;  ///< top edge
  double width = 0;
  double height = 0;
  double confidence = 0;  ///< 0 to 1

  bool operator==(const FaceBox&) const = default;
};
TQ_RECORD(FaceBox);

struct Shot {
  std::optional<std::string> timecode;      ///< HH:MM:SS.mmm
  std::optional<std::string> shotType;      ///< vocabulary `ShotType`
  std::optional<std::string> cameraMotion;  ///< vocabulary `CameraMotion`
  std::optional<std::string> framingNotes;
  std::optional<std::vector<Person>> people;
  std::optional<std::int64_t> peopleCount;
  std::optional<Setting> setting;
  std::optional<ColorPalette> colorPalette;
  std::optional<std::string> overallMood;
  std::optional<std::vector<std::string>> tags;
  std::optional<std::vector<FaceBox>> faces;             ///< from this machine, never from the model
  std::optional<std::vector<std::string>> onScreenText;  ///< from this machine, never from the model

  bool operator==(const Shot&) const = default;
};
TQ_RECORD(Shot);

}  // namespace tq
