#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::client {

namespace command {
// Login steps. The answer to each has the number of the next.
inline constexpr std::int32_t kNetworkName = 1;
inline constexpr std::int32_t kPassword = 2;
inline constexpr std::int32_t kUserName = 3;
// The client's own report, and those of the other members.
inline constexpr std::int32_t kReport = 4;
inline constexpr std::int32_t kMember = 5;
inline constexpr std::int32_t kMemberLeft = 6;
inline constexpr std::int32_t kIsAdmin = 9;
// Commands for administrators.
inline constexpr std::int32_t kAdminKick = 10;
inline constexpr std::int32_t kAdminBan = 11;
inline constexpr std::int32_t kAdminMessage = 12;
inline constexpr std::int32_t kAdminListBans = 13;
inline constexpr std::int32_t kAdminLiftBan = 14;
// Notices of the server.
inline constexpr std::int32_t kKicked = 996;
inline constexpr std::int32_t kBanned = 997;
inline constexpr std::int32_t kMessage = 998;
inline constexpr std::int32_t kBye = 999;
}  // namespace command

// Message layout: length (the header's 8 bytes included) and command, both big-endian signed
// 32-bit, then the payload.
inline constexpr std::size_t kHeaderBytes = 8;
// Far above the length of any message of the server; a greater one means that the peer does not
// speak the protocol.
inline constexpr std::size_t kMaxFrameBytes = std::size_t{64} << 20;

// Appends a message's header. The caller appends `payloadBytes` of payload.
void AppendHeader(std::string& output, std::int32_t command, std::size_t payloadBytes);
// Appends a message.
void AppendFrame(std::string& output, std::int32_t command, std::string_view payload);

// Reads a big-endian signed 32-bit number from the first four bytes, which must exist.
std::int32_t ReadInt32(std::string_view bytes);

// Cuts a byte stream, fed in pieces of any size, into messages. Copies only messages that are split
// between pieces, into a buffer that it reuses. Holds at most one message of kMaxFrameBytes.
class FrameCutter {
 public:
  // Calls onFrame(command, payload) for each complete message; the payload is valid only inside the
  // call. Returns false if a header has an impossible length; then no more can be read.
  template <typename OnFrame>
  bool Feed(std::string_view bytes, OnFrame&& onFrame) {
    while (!myPartial.empty() && !bytes.empty()) {
      const std::size_t taken = std::min(WholeLength(myPartial) - myPartial.size(), bytes.size());
      myPartial.append(bytes.substr(0, taken));
      bytes.remove_prefix(taken);
      // A header that is now complete may announce a payload.
      const std::size_t wanted = WholeLength(myPartial);
      if (wanted == kImpossible) return false;
      if (myPartial.size() == wanted) {
        onFrame(ReadInt32(std::string_view(myPartial).substr(4)),
                std::string_view(myPartial).substr(kHeaderBytes));
        myPartial.clear();
      } else {
        myPartial.reserve(wanted);
      }
    }
    while (!bytes.empty()) {
      const std::size_t wanted = WholeLength(bytes);
      if (wanted == kImpossible) return false;
      if (bytes.size() < wanted) {
        myPartial.reserve(wanted);
        myPartial.assign(bytes);
        break;
      }
      onFrame(ReadInt32(bytes.substr(4)), bytes.substr(kHeaderBytes, wanted - kHeaderBytes));
      bytes.remove_prefix(wanted);
    }
    return true;
  }

  // Drops an incomplete message, for a new connection.
  void Reset() { myPartial.clear(); }

 private:
  static constexpr std::size_t kImpossible = 0;

  // The length of the message at the start of `bytes`; kHeaderBytes while its header is incomplete.
  static std::size_t WholeLength(std::string_view bytes);

  std::string myPartial;
};

}  // namespace corvane::client
