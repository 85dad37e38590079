#pragma once

#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "app/app.h"
#include "server/client_socket.h"
#include "tests/support/other_program.h"
#include "tests/support/test_client.h"
#include "tests/support/web_server.h"

namespace corvane {

// An open application object with the networks "North" and "So\nuth", both with the password
// "secret" and five seats.
class AppFixture : public testing::Test {
 protected:
  explicit AppFixture(bool isHardened = false);

  std::string Query(const std::string& statements);
  // A client that is logged in.
  std::unique_ptr<TestClient> LoggedIn(const std::string& user,
                                       const std::string& network = "North",
                                       const char* from = "127.0.0.1");

  QTemporaryDir myFolder;
  WebServer myWebServer;
  // The message boxes so far, questions as "title? text", and the answer to all of them.
  std::vector<std::string> myBoxes;
  MessageBox::Answer myAnswer = MessageBox::Answer::OK;
  App myApp{myFolder.path(), [this](const MessageBox& box) {
              const bool asks = box.kind == MessageBox::Kind::Question;
              myBoxes.push_back(asks ? box.title + "? " + box.text : box.text);
              return myAnswer;
            }};
};

}  // namespace corvane
