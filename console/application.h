#pragma once

#include <functional>

#include <QApplication>

namespace corvane {

// Qt's application, taught two things: an error that an event handler lets out ends in
// LastResort, and a request to quit (also the desktop's at the end of the session) is carried out
// by Quit without asking the windows. Both do nothing until they are set.
class Application : public QApplication {
 public:
  Application(int& argc, char** argv);

  // Called inside the catch block.
  std::function<void()> LastResort;
  std::function<void()> Quit;

  bool notify(QObject* receiver, QEvent* event) override;
  bool event(QEvent* event) override;
};

}  // namespace corvane
