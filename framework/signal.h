#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace corvane {

// Keeps a listener connected; disconnects it when destroyed.
using SignalConnection = std::shared_ptr<const void>;

// An event with any number of listeners, called in the order in which they connected.
//
// Re-entrancy: a listener may connect and disconnect others and itself, and may destroy the signal.
// Raising the event calls the listeners connected at that time, except those disconnected before
// their turn. Not thread-safe.
template <typename... Arguments>
class Signal {
 public:
  using Listener = std::function<void(Arguments...)>;

  [[nodiscard]] SignalConnection Connect(Listener listener) {
    std::erase_if(myListeners, [](const auto& one) { return one.expired(); });
    auto connection = std::make_shared<const Listener>(std::move(listener));
    myListeners.push_back(connection);
    return connection;
  }

  void operator()(Arguments... arguments) const {
    const auto listeners = myListeners;
    for (const auto& one : listeners) {
      if (const auto listener = one.lock()) (*listener)(arguments...);
    }
  }

 private:
  std::vector<std::weak_ptr<const Listener>> myListeners;
};

}  // namespace corvane
