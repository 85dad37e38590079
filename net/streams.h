#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane {

// A stream that bytes are read from.
class Readable {
 public:
  virtual ~Readable() = default;

  // Up to so many bytes, fewer when fewer are there.
  virtual std::string Read(std::size_t count) = 0;
  // Whether nothing is left to read and nothing more will come. (The standard library's macro
  // takes the plain name.)
  virtual bool IsEOF() const = 0;
  virtual bool ReadError() const = 0;
};

// A stream that bytes are written to.
class Writeable {
 public:
  virtual ~Writeable() = default;

  virtual void Write(std::string_view bytes) = 0;
  // Passes on what is still kept back.
  virtual void Flush() = 0;
  virtual bool WriteError() const = 0;
};

// What the loop polls once a pass while something is queued.
class _Pollable {
 public:
  virtual ~_Pollable() = default;

  // Delivers one thing that is queued, except while one of its handlers is on the stack; whether
  // it did.
  virtual bool _Poll() = 0;
  // Asked after every poll: whether it stays on the loop's list. It is off the list from a no on.
  virtual bool StaysQueued() = 0;
};

}  // namespace corvane
