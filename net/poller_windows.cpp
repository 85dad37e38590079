#include <system_error>
#include <unordered_map>
#include <vector>
#include <winsock2.h>
// Needs winsock2.h before it.
#include <windows.h>

#include <QTimer>

#include "net/poller.h"

namespace corvane {
namespace {

constexpr UINT kSocketMessage = WM_USER;
constexpr long kAllEvents = FD_READ | FD_WRITE | FD_ACCEPT | FD_CONNECT | FD_CLOSE;
constexpr wchar_t kWindowClass[] = L"CorvanePoller";
// A thread's message queue holds 10,000 messages (USERPostMessageLimit, which may be set as low as
// 4,000). When this many have come at once, others may have been lost.
constexpr std::size_t kQueueMayHaveBeenFull = 3500;

}  // namespace

// The system posts a message to a hidden window when a socket becomes ready, and the next one after
// a read or write that would block: edge-triggered, at a cost that does not grow with the number of
// silent sockets. Qt's loop, or that of a system dialog, dispatches the messages.
struct Poller::System {
  explicit System(std::function<void()> wakeFunction) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = HandleMessage;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassExW(&windowClass);  // fails for all pollers but the first: harmless
    window = CreateWindowExW(0, kWindowClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                             windowClass.hInstance, nullptr);
    if (window == nullptr) {
      throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                              "CreateWindowEx");
    }
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    // A zero timer and not the message itself: the system dispatches messages before the user's
    // input, Qt does not.
    wake.setSingleShot(true);
    wake.setInterval(0);
    QObject::connect(&wake, &QTimer::timeout, std::move(wakeFunction));
  }
  ~System() { DestroyWindow(window); }
  System(const System&) = delete;
  System& operator=(const System&) = delete;

  static LRESULT CALLBACK HandleMessage(HWND target, UINT message, WPARAM first, LPARAM second) {
    auto* const system = reinterpret_cast<System*>(GetWindowLongPtrW(target, GWLP_USERDATA));
    if (message != kSocketMessage || system == nullptr) {
      return DefWindowProcW(target, message, first, second);
    }
    system->Note(first, second);
    system->WakeSoon();
    return 0;
  }

  void Note(WPARAM socket, LPARAM what) {
    // A socket that was closed meanwhile may still have messages in the queue.
    const auto token = tokens.find(static_cast<os::SocketHandle>(socket));
    if (token == tokens.end()) return;
    const long event = WSAGETSELECTEVENT(what);
    const bool hungUp = event == FD_CLOSE || WSAGETSELECTERROR(what) != 0;
    arrived.push_back({token->second, hungUp || event == FD_READ || event == FD_ACCEPT,
                       hungUp || event == FD_WRITE || event == FD_CONNECT, hungUp});
  }

  void TakeMessages() {
    MSG message;
    // A sent message, unlike a posted one, would run a handler in the middle of a pass.
    while (PeekMessageW(&message, window, kSocketMessage, kSocketMessage,
                        PM_REMOVE | PM_QS_POSTMESSAGE)) {
      if (message.message == WM_QUIT) {
        // WM_QUIT passes any filter; it is meant for Qt.
        PostQuitMessage(static_cast<int>(message.wParam));
        return;
      }
      Note(message.wParam, message.lParam);
    }
  }

  void WakeSoon() {
    if (!isQuiet && !wake.isActive()) wake.start();
  }

  // Reporting a socket that is not ready does no harm, except that a connecting one would seem to
  // be connected if it were writable.
  void NoteAll() {
    for (const auto& [socket, token] : tokens) {
      sockaddr_in peer;
      int length = sizeof peer;
      const bool isConnected = getpeername(static_cast<SOCKET>(socket),
                                           reinterpret_cast<sockaddr*>(&peer), &length) == 0;
      arrived.push_back({token, true, isConnected, false});
    }
  }

  HWND window;
  QTimer wake;
  bool isQuiet = false;
  std::unordered_map<os::SocketHandle, std::uint64_t> tokens;
  std::vector<Ready> arrived;
  std::vector<Ready> ready;
};

Poller::Poller(std::function<void()> wake) : mySystem(std::make_unique<System>(std::move(wake))) {}

Poller::~Poller() = default;

int Poller::Add(os::SocketHandle handle, std::uint64_t token) {
  mySystem->tokens[handle] = token;
  const int result =
      WSAAsyncSelect(static_cast<SOCKET>(handle), mySystem->window, kSocketMessage, kAllEvents);
  return result == SOCKET_ERROR ? WSAGetLastError() : 0;
}

void Poller::Remove(os::SocketHandle handle) {
  WSAAsyncSelect(static_cast<SOCKET>(handle), mySystem->window, 0, 0);
  // Messages in the queue must not be taken for those of the next socket with this number.
  mySystem->TakeMessages();
  mySystem->tokens.erase(handle);
  if (!mySystem->arrived.empty()) mySystem->WakeSoon();
}

void Poller::Quiet() {
  mySystem->isQuiet = true;
  mySystem->wake.stop();
}

std::span<const Poller::Ready> Poller::Wait(std::chrono::milliseconds patience) {
  mySystem->TakeMessages();
  if (mySystem->arrived.empty() && patience.count() > 0) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(patience.count()),
                              QS_POSTMESSAGE);
    mySystem->TakeMessages();
  }
  if (mySystem->arrived.size() >= kQueueMayHaveBeenFull) mySystem->NoteAll();
  mySystem->ready.swap(mySystem->arrived);
  mySystem->arrived.clear();
  return mySystem->ready;
}

}  // namespace corvane
