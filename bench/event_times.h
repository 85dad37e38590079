#pragma once

#include <chrono>
#include <vector>

#include <QCoreApplication>

namespace corvane {

// An application that measures how long each event, with those nested in it, blocks the program and
// its window.
template <typename ApplicationType>
class MeasuredApplication : public ApplicationType {
 public:
  using ApplicationType::ApplicationType;

  bool notify(QObject* receiver, QEvent* event) override {
    using Clock = std::chrono::steady_clock;
    if (myIsInside) return ApplicationType::notify(receiver, event);
    myIsInside = true;
    const Clock::time_point begin = Clock::now();
    const bool result = ApplicationType::notify(receiver, event);
    durations.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    myIsInside = false;
    return result;
  }

  std::vector<double> durations;  // ms

 private:
  bool myIsInside = false;
};

}  // namespace corvane
