#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace corvane {

// What a listener keeps as long as it listens: it disconnects when it goes.
using SignalConnection = std::shared_ptr<const void>;

// An event with any number of listeners, called in the order in which they connected. A listener
// may connect and disconnect others, itself too, and destroy the signal: those who are connected at
// that time and still are when their turn comes are called.
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
