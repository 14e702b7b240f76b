// Helpers for the simulated board's tests: fixture paths, one call with a fresh answer
// buffer, a temporary field file, and an independent ISO/IEC 13239 CRC to check against.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <unistd.h>

namespace simtest {

inline std::string fixture(const std::string& name) { return std::string(TEST_FIXTURES) + "/" + name; }

struct Reply {
  std::int32_t status;
  std::string answer;
  bool operator==(const Reply&) const = default;
};
inline std::ostream& operator<<(std::ostream& os, const Reply& r) {
  return os << "{status " << r.status << ", \"" << r.answer << "\"}";
}

// Calls `op(buffer)` with a 256-character buffer that holds garbage first, so that an
// operation that leaves the buffer alone shows.
template <typename Op>
Reply ask(Op op) {
  char buffer[256];
  std::memset(buffer, 'X', sizeof buffer);
  buffer[255] = '\0';
  const std::int32_t status = op(buffer);
  return {status, std::string(buffer)};
}

// Bitwise CRC of ISO/IEC 13239 written out as the standard gives it (reflected 0x1021,
// preset FFFF, complemented), for checking the board's CRCs against.
inline std::uint16_t referenceCrc13239(const std::string& bytes) {
  std::uint16_t crc = 0xFFFF;
  for (unsigned char byte : bytes) {
    for (int bit = 0; bit < 8; ++bit) {
      const bool mix = ((crc ^ (byte >> bit)) & 1) != 0;
      crc >>= 1;
      if (mix) crc ^= 0x8408;
    }
  }
  return static_cast<std::uint16_t>(~crc);
}

// A field file in a fresh temporary directory, removed with the object.
class TempFieldFile {
 public:
  TempFieldFile() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tl42rq_field_XXXXXX").string();
    dir_ = ::mkdtemp(pattern.data());
    path_ = dir_ + "/TL42RQ_field.json";
  }
  ~TempFieldFile() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  const std::string& path() const { return path_; }
  // Writes the text and gives the file a modification time `secondsLater` after the last
  // one, so a change is seen even on file systems with coarse time stamps.
  void write(const std::string& text, int secondsLater = 0) {
    {
      std::ofstream out(path_, std::ios::binary | std::ios::trunc);
      out << text;
    }
    namespace fs = std::filesystem;
    if (!stamped_) stamp_ = fs::last_write_time(path_);
    stamp_ += std::chrono::seconds(secondsLater);
    fs::last_write_time(path_, stamp_);
    stamped_ = true;
  }

 private:
  std::string dir_;
  std::string path_;
  std::filesystem::file_time_type stamp_{};
  bool stamped_ = false;
};

}  // namespace simtest
