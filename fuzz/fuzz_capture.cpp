// The capture export reads requests and answers that came from a library the program
// does not control: any text, in any order of operations, must turn into packets and a
// pcapng file without a crash, with lengths that agree with the bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <string>

#include "export/Capture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Records: one byte for the operation and the status, then request and answer texts
  // separated by NUL bytes.
  std::deque<reader::ExchangeRecord> records;
  std::size_t i = 0;
  std::int64_t t = 0;
  while (i < size) {
    reader::ExchangeRecord r;
    const std::uint8_t pick = data[i++];
    r.op = reader::kOperations[pick % reader::kOperations.size()].op;
    r.status = (pick & 0x80) ? 5 : 0;
    r.timeUs = (t += (pick & 0x03));
    while (i < size && data[i] != 0) r.request.push_back(static_cast<char>(data[i++]));
    ++i;
    while (i < size && data[i] != 0) r.answer.push_back(static_cast<char>(data[i++]));
    ++i;
    records.push_back(std::move(r));
  }
  const pcapng::Bytes file = capture::pcapngFile(records);
  // Every block states its length twice, and the blocks fill the file exactly.
  std::size_t at = 0;
  while (at + 12 <= file.size()) {
    const std::uint32_t length = file[at + 4] | file[at + 5] << 8 | file[at + 6] << 16 |
                                 static_cast<std::uint32_t>(file[at + 7]) << 24;
    if (length < 12 || length % 4 != 0 || at + length > file.size()) std::abort();
    at += length;
  }
  if (at != file.size()) std::abort();
  return 0;
}
