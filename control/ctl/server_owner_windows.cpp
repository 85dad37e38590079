#include <memory>
#include <vector>
#include <windows.h>

#include "control/ctl/server_owner.h"

namespace corvane::ctl {
namespace {

struct HandleEnd {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleEnd>;

// A buffer that begins with a TOKEN_USER; empty if the system refuses it.
std::vector<char> UserOf(HANDLE process) {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(process, TOKEN_QUERY, &opened)) return {};
  const Handle token(opened);
  DWORD size = 0;
  GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
  std::vector<char> user(size);
  if (!GetTokenInformation(token.get(), TokenUser, user.data(), size, &size)) return {};
  return user;
}

PSID SidOf(const std::vector<char>& user) {
  return reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid;
}

}  // namespace

bool IsServerOfThisUser(const QLocalSocket& socket) {
  ULONG number = 0;
  const auto pipe = reinterpret_cast<HANDLE>(socket.socketDescriptor());
  if (!GetNamedPipeServerProcessId(pipe, &number)) return false;
  const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, number));
  // Refused for a process of another user.
  if (!process) return false;
  const std::vector<char> theirs = UserOf(process.get());
  const std::vector<char> ours = UserOf(GetCurrentProcess());
  return !theirs.empty() && !ours.empty() && EqualSid(SidOf(theirs), SidOf(ours));
}

}  // namespace corvane::ctl
