// One exchange with the board: a zero-filled buffer, the call, and on status 5 the
// panel's reconnect and one repeat.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "reader/ReaderDriver.h"

namespace reader {

struct Answer {
  std::int32_t status = kStatusNoBoard;
  std::string text;  // the buffer up to its first NUL
  bool ok() const { return status == kStatusOk; }
  // Status 0 and the answer begins with this code ("00" for chip commands, "80" for
  // Send Receive, "5500" for the echo).
  bool good(std::string_view code) const { return ok() && text.compare(0, code.size(), code) == 0; }
};

using Reconnect = std::function<void()>;

// One call with a fresh buffer and no reconnect.
Answer callOnce(ReaderDriver& d, Op op, const std::string& request = {});
// The rule of every handler: on status 5 reconnect, then call once more with the same
// request; the second status replaces the first. Never a third call.
Answer exchange(ReaderDriver& d, Op op, const std::string& request, const Reconnect& reconnect);

}  // namespace reader
