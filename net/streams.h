#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane {

// A stream that bytes are read from.
class Readable {
 public:
  virtual ~Readable() = default;

  // Returns at most so many bytes, fewer if fewer are there.
  virtual std::string Read(std::size_t count) = 0;
  // Whether nothing is left to read and nothing more will come. (EOF is a macro of the standard
  // library.)
  virtual bool IsEOF() const = 0;
  virtual bool ReadError() const = 0;
};

// A stream that bytes are written to.
class Writeable {
 public:
  virtual ~Writeable() = default;

  virtual void Write(std::string_view bytes) = 0;
  // Sends the bytes that are still buffered.
  virtual void Flush() = 0;
  virtual bool WriteError() const = 0;
};

// An object that the loop polls once a pass while it has something queued.
class _Pollable {
 public:
  virtual ~_Pollable() = default;

  // Delivers one queued item, unless one of the object's handlers is on the stack. Returns whether
  // it did.
  virtual bool _Poll() = 0;
  // Called after every poll; false takes the object off the loop's list.
  virtual bool StaysQueued() = 0;
};

}  // namespace corvane
