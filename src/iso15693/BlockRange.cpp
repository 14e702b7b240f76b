#include "iso15693/BlockRange.h"

#include <cmath>

#include "reader/HexText.h"

namespace iso15693 {

long rangeCount(long start, long end, long mask) { return end >= start ? end - start + 1 : mask + 2 + end - start; }

long readMultipleChunk(long address, long remaining) {
  const long m = ((address % 8) + 8) % 8;
  if (m > 8 - remaining) return 8 - m;
  if (remaining > 8) return 8;
  return remaining;
}

std::vector<Chunk> readMultipleChunks(long start, long count) {
  std::vector<Chunk> chunks;
  long a = start;
  long r = count;
  while (r > 0) {
    const long c = readMultipleChunk(a, r);
    chunks.push_back({a, c});
    r -= c;
    a += c;
  }
  return chunks;
}

long securityStatusChunk(long remaining) { return remaining < kSecurityStatusChunk ? remaining : kSecurityStatusChunk; }

std::vector<Chunk> securityStatusChunks(long start, long count) {
  std::vector<Chunk> chunks;
  long a = start;
  long r = count;
  while (r > 0) {
    const long c = securityStatusChunk(r);
    chunks.push_back({a, c});
    r -= c;
    a += c;
  }
  return chunks;
}

int addressBoxWidth(long memorySizeBytes) {
  if (memorySizeBytes <= 2) return 1;
  const long b = std::lround(std::log2(static_cast<double>(memorySizeBytes - 1)));
  return static_cast<int>((b - 1) / 4 + 1);
}

std::string addressBoxText(long address, int width) {
  return reader::hexPadWidth7(static_cast<std::int32_t>(address), static_cast<std::uint8_t>(width));
}

int rfAddressBytesForDensity(long densityKbit) { return densityKbit > 8 ? 2 : 1; }

}  // namespace iso15693
