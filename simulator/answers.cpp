#include "simulator/answers.h"

#include <algorithm>
#include <cctype>

namespace sim {

namespace {

constexpr Operation kOperations[] = {
    {"TL42RQDLL_USBconnect", false, false},
    {"TL42RQDLL_USBhandlecheck", false, false},
    {"TL42RQDll_GetDLLrev", false, true},
    {"TL42RQDLL_getMCUrev", false, true},
    {"TL42RQDll_Idn", false, true},
    {"TL42RQDll_Echo", false, true},
    {"TL42RQDll_Select", true, true},
    {"TL42RQDll_SendReceive", true, true},
    {"TL42RQDll_KQCmd", true, true},
    {"TL42RQDll_FieldOff", false, true},
    {"TL42RQDll_ResetSPI", false, true},
    {"TL42RQDll_SendIRQPulse", false, true},
    {"TL42RQDll_SendNSSPulse", false, true},
    {"TL42RQDll_Polling_Reading", false, true},
    {"TL42RQDLL_getInterfacePinState", false, true},
};

// The request as the entries hold theirs: no blanks, letters in upper case.
std::string normalised(const char* request) {
  std::string out;
  for (const char* p = request; p && *p; ++p) {
    const unsigned char c = static_cast<unsigned char>(*p);
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    out += static_cast<char>(std::toupper(c));
  }
  return out;
}

}  // namespace

std::span<const Operation> operations() { return kOperations; }

const Operation* findOperation(std::string_view name) {
  const auto it = std::find_if(std::begin(kOperations), std::end(kOperations),
                               [&](const Operation& o) { return name == o.name; });
  return it == std::end(kOperations) ? nullptr : it;
}

std::optional<Overridden> takeOverride(std::vector<AnswerOverride>& answers, std::string_view op,
                                       const char* request) {
  // The request is put in the entries' form only once an entry for this operation is met.
  std::optional<std::string> text;
  for (AnswerOverride& entry : answers) {
    if (entry.op != op || (entry.times && entry.left <= 0)) continue;
    if (!text) text = normalised(request);
    if (text->compare(0, entry.request.size(), entry.request) != 0) continue;
    if (entry.times) --entry.left;
    return Overridden{entry.status, entry.answer};
  }
  return std::nullopt;
}

void restoreTimes(std::vector<AnswerOverride>& answers) {
  for (AnswerOverride& entry : answers)
    if (entry.times) entry.left = *entry.times;
}

}  // namespace sim
