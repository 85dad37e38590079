#pragma once

#include <QApplication>

#include "app/server_application.h"

namespace corvane {

// The application object of a server that may have a window.
class Application : public ServerApplication<QApplication> {
 public:
  Application(int& argc, char** argv);
};

// Whether windows can be seen. Needs an Application.
bool HasDisplay();

}  // namespace corvane
