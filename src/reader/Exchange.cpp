#include "reader/Exchange.h"

#include <vector>

#include "reader/ExchangeRecord.h"

namespace reader {

Answer callOnce(ReaderDriver& d, Op op, const std::string& request) {
  // Zero-filled and larger than agreed, with a NUL at the end that the library cannot
  // reach through the agreed size: the text is cut at the first NUL, whatever came back.
  std::vector<char> buffer(kGuardedAnswerSize + 1, '\0');
  Answer a;
  a.status = d.call(op, request.c_str(), buffer.data());
  buffer.back() = '\0';
  a.text = buffer.data();
  reportExchange(op, request, a.status, a.text);
  return a;
}

Answer exchange(ReaderDriver& d, Op op, const std::string& request, const Reconnect& reconnect) {
  Answer a = callOnce(d, op, request);
  if (a.status == kStatusNoBoard) {
    if (reconnect) reconnect();
    a = callOnce(d, op, request);
  }
  return a;
}

}  // namespace reader
