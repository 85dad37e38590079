#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The commands of the client protocol and the payloads that both ends agree on; docs/protocol.md
// describes them all.
namespace corvane {

class ClientSocket;

namespace wire {

// Login: each step's answer carries the number of the next.
inline constexpr std::int32_t kNetwork = 1;
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
inline constexpr std::int32_t kKick = 996;
inline constexpr std::int32_t kBan = 997;
inline constexpr std::int32_t kMessage = 998;
inline constexpr std::int32_t kBye = 999;

inline constexpr std::string_view kOk = "OK";
inline constexpr std::string_view kFail = "FAIL";
inline constexpr std::string_view kByeText = "BYE";

// "name|X,Y,Facet,HP,InBattle,IsDead", as it is relayed when it changes.
std::string PositionRecord(const ClientSocket& member);

// The same as the member list gives it: without the comma behind HP, which is deliberate.
std::string MemberRecord(const ClientSocket& member);

}  // namespace wire
}  // namespace corvane
