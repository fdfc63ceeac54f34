#include "TQCore/Models/Shot.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<PersonHair> = RecordTable{
    field("color", &PersonHair::color),
    field("length", &PersonHair::length),
    field("style", &PersonHair::style),
};
TQ_RECORD_CODEC(PersonHair);

template <>
constexpr auto recordTable<PersonClothing> = RecordTable{
    field("top", &PersonClothing::top),
    field("bottom", &PersonClothing::bottom),
    field("accessories", &PersonClothing::accessories),
    field("overall_style", &PersonClothing::overallStyle),
};
TQ_RECORD_CODEC(PersonClothing);

template <>
constexpr auto recordTable<Person> = RecordTable{
    field("approximate_age_range", &Person::approximateAgeRange),
    field("perceived_gender_presentation", &Person::perceivedGenderPresentation),
    field("skin_tone", &Person::skinTone),
    field("hair", &Person::hair),
    field("eyes", &Person::eyes),
    field("pose", &Person::pose),
    field("expression", &Person::expression),
    field("perceived_mood", &Person::perceivedMood),
    field("mood_confidence", &Person::moodConfidence),
    field("clothing", &Person::clothing),
};
TQ_RECORD_CODEC(Person);

template <>
constexpr auto recordTable<Setting> = RecordTable{
    field("location_type", &Setting::locationType), field("environment", &Setting::environment),
    field("time_of_day", &Setting::timeOfDay),      field("weather", &Setting::weather),
    field("lighting", &Setting::lighting),
};
TQ_RECORD_CODEC(Setting);

template <>
constexpr auto recordTable<ColorPalette> = RecordTable{
    field("dominant", &ColorPalette::dominant),
    field("description", &ColorPalette::description),
};
TQ_RECORD_CODEC(ColorPalette);

template <>
constexpr auto recordTable<FaceBox> = RecordTable{
    field("x", &FaceBox::x),
    field("y", &FaceBox::y),
    field("width", &FaceBox::width),
    field("height", &FaceBox::height),
    field("confidence", &FaceBox::confidence),
};
TQ_RECORD_CODEC(FaceBox);

template <>
constexpr auto recordTable<Shot> = RecordTable{
    field("timecode", &Shot::timecode),
    field("shot_type", &Shot::shotType),
    field("camera_motion", &Shot::cameraMotion),
    field("framing_notes", &Shot::framingNotes),
    field("people", &Shot::people),
    field("people_count", &Shot::peopleCount),
    field("setting", &Shot::setting),
    field("color_palette", &Shot::colorPalette),
    field("overall_mood", &Shot::overallMood),
    field("tags", &Shot::tags),
    field("faces", &Shot::faces),
    field("on_screen_text", &Shot::onScreenText),
};
TQ_RECORD_CODEC(Shot);

}  // namespace tq
