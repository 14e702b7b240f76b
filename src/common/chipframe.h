// How the driver operations turn their request text into the chip's command frames, and the
// fixed frames some of them send. Shared by every driver library that talks to a chip (the
// simulated board, the serial-line driver), so that each puts the same bytes on the chip's
// host interface. No Qt here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/hex.h"

namespace chipframe {

inline constexpr std::uint8_t kIdn = 0x01;
inline constexpr std::uint8_t kProtocolSelect = 0x02;
inline constexpr std::uint8_t kSendRecv = 0x04;
inline constexpr std::uint8_t kIdle = 0x07;
inline constexpr std::uint8_t kBaudRate = 0x0A;
inline constexpr std::uint8_t kEcho = 0x55;

// Code, length and the bytes of the request text (blanks removed). Nullopt when the text is
// no whole number of bytes or holds more than 255 of them.
std::optional<hex::Bytes> commandFrame(std::uint8_t command, const char* text);

// A frame the chip reads as it stands: the echo byte alone, or code, length and exactly
// that many data bytes.
bool isWholeFrame(const hex::Bytes& frame);

hex::Bytes idnFrame();   // 01 00
hex::Bytes echoFrame();  // the single byte 55, without length

// The text of TL42RQDll_KQCmd: a two-digit mode, then a whole chip command with its code
// and length.
struct KQRequest {
  enum class Mode { Chip, Controller, Bad };
  Mode mode = Mode::Bad;
  hex::Bytes frame;  // the bytes behind the mode; empty for Bad
};
// Mode "01" hands the frame to the chip as it stands; "02" addresses the board's controller;
// anything else, or bytes that are no hexadecimal, is Bad.
KQRequest kqRequest(const char* text);

}  // namespace chipframe
