// The chip's fixed configuration frames, exactly as they travel (code, length, data).
// Every panel and tool that configures the chip takes them from here.
#pragma once

#include <string>

namespace chip {

// Write register 3A (16-bit timer), flag 00, data 58 04.
inline constexpr const char* kTimerConfiguration = "09043A005804";
// Write register 68 with flag 01: index 01 (ARC_B), then the ARC_B value.
inline constexpr const char* kModulationGainPrefix = "0904680101";
inline std::string iso14443AModulationGainFrame(const std::string& value) { return kModulationGainPrefix + value; }
inline constexpr const char* kModulationGain30 = "090468010130";
inline constexpr const char* kModulationGain50 = "090468010150";
// Write 15 bytes from register 0B (codec), flag 00.
inline constexpr const char* kCodecConfiguration14443A = "09110B00241204880F1F3F3F01000505005500";
// Write register 0A (codec), flag 01, data 02 A1.
inline constexpr const char* kCodecConfiguration18092 = "09040A0102A1";
// Write register 60 (standalone mode controller), flag 01, data 18 00.
inline constexpr const char* kStandaloneConfiguration = "090460011800";
// Read register 62 (wake-up reason), one byte.
inline constexpr const char* kReadWakeUpRegister = "0803620100";

}  // namespace chip
