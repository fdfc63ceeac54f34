#pragma once

struct AVFrame;

namespace tq {

/// True for video whose transfer curve is PQ (SMPTE ST 2084) or HLG (ARIB STD-B67).
bool isHighDynamicRange(const AVFrame& frame);

/// Brings a picture of such video to an ordinary display: `source` in RGB48 with BT.2020 primaries and the transfer
/// curve `transfer` (an AVColorTransferCharacteristic), `target` in RGB24 for sRGB, both of one size.
void toneMap(const AVFrame& source, int transfer, AVFrame& target);

}  // namespace tq
