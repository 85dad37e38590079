#pragma once

namespace corvane {

// The system's error codes, as in an Error event.
extern const int kAddressInUse;
extern const int kAddressNotAvailable;
extern const int kConnectionRefused;
extern const int kConnectionReset;
extern const int kInvalidArgument;
extern const int kNoBuffers;

}  // namespace corvane
