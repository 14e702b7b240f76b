// Block addresses and ranges of the memory commands: how many blocks a range holds
// (also through the end of memory), how a range is cut into requests, and how wide the
// address boxes are for a product.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace iso15693 {

// Blocks from start to end; an end below the start runs through the last block and on
// from block 0: mask + 2 + end - start.
long rangeCount(long start, long end, long blockAddressMask);

struct Chunk {
  long address;
  long count;
};

// Read Multiple Block asks for at most eight blocks, never over a multiple of eight
// block addresses.
long readMultipleChunk(long address, long remaining);
// The whole walk; addresses are not masked, as the walk sends them.
std::vector<Chunk> readMultipleChunks(long start, long count);
// Get Multiple Block Security Status asks for 32 blocks at a time.
inline constexpr long kSecurityStatusChunk = 32;
long securityStatusChunk(long remaining);
std::vector<Chunk> securityStatusChunks(long start, long count);

// Digits of the address boxes: B = log2(memory size - 1), rounded; (B-1)\4+1.
int addressBoxWidth(long memorySizeBytes);
// The address in a box of that width, as a range is written back.
std::string addressBoxText(long address, int width);

// The address width of the frames: 2 when the product's density is above 8 kbit.
int rfAddressBytesForDensity(long densityKbit);

}  // namespace iso15693
