#include <system_error>
#include <unordered_map>
#include <vector>
#include <winsock2.h>
// It needs winsock2.h before it.
#include <windows.h>

#include <QTimer>

#include "net/poller.h"

namespace corvane {
namespace {

constexpr UINT kSocketMessage = WM_USER;
constexpr long kAllEvents = FD_READ | FD_WRITE | FD_ACCEPT | FD_CONNECT | FD_CLOSE;
constexpr wchar_t kWindowClass[] = L"CorvanePoller";
// The queue of a thread's messages holds 10,000 (USERPostMessageLimit), though a machine may be set
// to 4,000. When so many have come at once, others may have found no place.
constexpr std::size_t kQueueMayHaveBeenFull = 3500;

}  // namespace

// The system posts a message to a window of ours, that nobody sees, when a socket becomes ready,
// and the next when the socket was read or written in vain since: what epoll calls edge-triggered,
// at a cost that does not grow with the sockets that are silent. Qt's loop, or a dialog's of the
// system, hands the messages out.
struct Poller::System {
  explicit System(std::function<void()> wakeFunction) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = HandleMessage;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassExW(&windowClass);  // fails for all but the first poller, which does no harm
    window = CreateWindowExW(0, kWindowClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                             windowClass.hInstance, nullptr);
    if (window == nullptr) {
      throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                              "CreateWindowEx");
    }
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    // A timer of no length and not the message itself: the system hands out messages before the
    // user's input, Qt does not.
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
    // One that was closed meanwhile may still have messages on their way.
    const auto token = tokens.find(static_cast<os::SocketHandle>(socket));
    if (token == tokens.end()) return;
    const long event = WSAGETSELECTEVENT(what);
    const bool hungUp = event == FD_CLOSE || WSAGETSELECTERROR(what) != 0;
    arrived.push_back({token->second, hungUp || event == FD_READ || event == FD_ACCEPT,
                       hungUp || event == FD_WRITE || event == FD_CONNECT, hungUp});
  }

  void TakeMessages() {
    MSG message;
    // Messages that are sent, not posted, would run a handler in the middle of a pass.
    while (PeekMessageW(&message, window, kSocketMessage, kSocketMessage,
                        PM_REMOVE | PM_QS_POSTMESSAGE)) {
      if (message.message == WM_QUIT) {
        // It comes whatever was asked for, and is Qt's.
        PostQuitMessage(static_cast<int>(message.wParam));
        return;
      }
      Note(message.wParam, message.lParam);
    }
  }

  void WakeSoon() {
    if (!isQuiet && !wake.isActive()) wake.start();
  }

  // Whoever takes a socket for ready that is not finds out by itself. Only of one that is
  // connecting still, being writable would say that it is connected.
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
  // What was posted already must not be taken for news of the next socket of that number.
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
