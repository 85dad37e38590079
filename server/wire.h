#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The commands of the client protocol and their fixed payloads; docs/protocol.md describes them.
namespace corvane {

class ClientSocket;

namespace wire {

// The answer to a login step has the number of the next step.
inline constexpr std::int32_t kNetworkName = 1;
inline constexpr std::int32_t kPassword = 2;
inline constexpr std::int32_t kUserName = 3;
inline constexpr std::int32_t kReport = 4;

inline constexpr std::int32_t kMember = 5;
inline constexpr std::int32_t kMemberLeft = 6;
inline constexpr std::int32_t kIsAdmin = 9;
inline constexpr std::int32_t kAdminKick = 10;
inline constexpr std::int32_t kAdminBan = 11;
inline constexpr std::int32_t kAdminMessage = 12;
inline constexpr std::int32_t kAdminListBans = 13;
inline constexpr std::int32_t kAdminLiftBan = 14;
inline constexpr std::int32_t kKicked = 996;
inline constexpr std::int32_t kBanned = 997;
inline constexpr std::int32_t kMessage = 998;
inline constexpr std::int32_t kBye = 999;

inline constexpr std::string_view kOk = "OK";
inline constexpr std::string_view kFail = "FAIL";
inline constexpr std::string_view kByeText = "BYE";
inline constexpr std::string_view kBannedText =
    "Please contact an administrator formore information.";  // "formore": deliberate

// "name|X,Y,Facet,HP,InBattle,IsDead", as a changed report is relayed.
std::string PositionRecord(const ClientSocket& member);

// The same for the list of members, which deliberately has no comma after HP.
std::string MemberRecord(const ClientSocket& member);

}  // namespace wire
}  // namespace corvane
