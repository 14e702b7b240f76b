// Answer overrides: the field file's "answers" list, which makes the board give any answer
// a real board can give (tag errors, bad CRCs, short frames, odd statuses) on demand.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

// One of the fifteen operations as the library exports it, and what it carries.
struct Operation {
  const char* name;
  bool hasRequest;  // Select, SendReceive and KQCmd take a request text
  bool hasAnswer;   // USBconnect and USBhandlecheck have no answer buffer
};

std::span<const Operation> operations();
const Operation* findOperation(std::string_view name);

// One entry of "answers". An entry answers instead of the chip model.
struct AnswerOverride {
  std::string op;                  // the operation's exported name
  std::string request;             // upper-case digits the request begins with; "" matches all
  std::string answer;              // handed back as it stands, also empty
  std::int32_t status = 0;
  std::optional<long long> times;  // none: every matching call
  long long left = 0;              // times left, when `times` is set
};

struct Overridden {
  std::int32_t status;
  std::string answer;
};

// The first entry for `op` whose request prefix matches and that has times left; its
// count goes down by one. Blanks in `request` are ignored and letters compared in upper
// case. None: the simulation answers.
std::optional<Overridden> takeOverride(std::vector<AnswerOverride>& answers, std::string_view op,
                                       const char* request);
// Every entry gets back the times the file gave it.
void restoreTimes(std::vector<AnswerOverride>& answers);

}  // namespace sim
