#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// The lines of the status log, in blocks of some 64 KiB: a line costs its bytes and one number, and
// the oldest ones go a block at a time.
class StatusLog {
 public:
  // The two texts together are the new last line.
  void Append(std::string_view prefix, std::string_view text);
  void Clear();

  std::size_t Count() const { return myEnd - myBegin; }
  // Counted from the oldest that is kept; valid until the log changes.
  std::string_view Line(std::size_t number) const;

  // Of all lines; and how many lines have to go, oldest first, to leave at most so many.
  std::size_t Bytes() const { return myBytes; }
  std::size_t LinesOver(std::size_t bytes) const;
  // Drops so many lines, as LinesOver said.
  void DropOldest(std::size_t lines);

 private:
  struct Block {
    std::size_t begin;  // number of its first line, since the log began
    std::string bytes;
    std::vector<std::uint32_t> ends;  // of its lines in the bytes
  };

  std::deque<Block> myBlocks;
  std::size_t myBegin = 0;  // numbers since the log began
  std::size_t myEnd = 0;
  std::size_t myBytes = 0;
};

}  // namespace corvane
