#include "TQCore/Models/SourceMetadata.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<GPS> = RecordTable{
    field("latitude", &GPS::latitude),
    field("longitude", &GPS::longitude),
    field("altitude_meters", &GPS::altitudeMeters),
    field("place_name", &GPS::placeName),
};
TQ_RECORD_CODEC(GPS);

template <>
constexpr auto recordTable<SourceMetadata> = RecordTable{
    field("filename", &SourceMetadata::filename),
    field("duration_seconds", &SourceMetadata::durationSeconds),
    field("resolution", &SourceMetadata::resolution),
    field("frame_rate", &SourceMetadata::frameRate),
    field("codec", &SourceMetadata::codec),
    field("file_size_bytes", &SourceMetadata::fileSizeBytes),
    field("sha256", &SourceMetadata::sha256),
    field("described_at", &SourceMetadata::describedAt),
    field("gps", &SourceMetadata::gps),
};
TQ_RECORD_CODEC(SourceMetadata);

}  // namespace tq
