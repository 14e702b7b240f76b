// The field in front of the antenna as the board sees it: the contents of the field file
// and where they came from. A field read from a file follows the file: when its
// modification time (or size, or the file itself) changes, it is read again, so that a
// person can put a tag in or take it out while the program runs.
#pragma once

#include <string>
#include <string_view>

#include <sys/stat.h>

#include "simulator/fieldfile.h"

namespace sim {

// The file that TL42RQ_FIELD names, else the first of the places install::fieldFilePlaces
// lists that exists: TL42RQ_field.json beside the library, in the user's configuration
// folder, in the installed data folder.
std::string defaultFieldPath();

class Field {
 public:
  Field() : contents_(defaultField()) {}

  // Each load returns the error text, empty on success. On error the field is empty and
  // the board has its defaults.
  std::string loadText(std::string_view json);     // stops following any file
  std::string loadFile(const std::string& path);   // follows this file from now on
  // True when the followed file changed since it was read; it has then been read again and
  // `error` holds the outcome.
  bool reloadIfChanged(std::string& error);

  FieldContents& contents() { return contents_; }
  const FieldContents& contents() const { return contents_; }

 private:
  struct Stamp {
    bool exists = false;
    struct timespec modified {};
    off_t size = 0;
    ino_t inode = 0;
    bool operator==(const Stamp& o) const {
      return exists == o.exists && modified.tv_sec == o.modified.tv_sec && modified.tv_nsec == o.modified.tv_nsec &&
             size == o.size && inode == o.inode;
    }
  };
  static Stamp stampOf(const std::string& path);
  std::string readFollowed();

  FieldContents contents_;
  std::string path_;  // empty when the field came as text
  Stamp stamp_;
};

}  // namespace sim
