#pragma once

#include <functional>
#include <string>

namespace corvane {

// One modal box to put before the operator.
struct MessageBox {
  enum class Kind { Message, Question };
  enum class Answer { OK, Yes, No };

  Kind kind = Kind::Message;
  std::string title;  // empty: the program's name
  std::string text;
};

// Shows the box and returns what the operator chose: OK for a message, Yes or No for a question.
// Installed by the console; tests answer in its place.
using MessageBoxFunction = std::function<MessageBox::Answer(const MessageBox&)>;

// For a program with nobody in front of it: writes the text to standard error and counts a
// message as acknowledged, a question as answered No.
MessageBox::Answer MessageToStandardError(const MessageBox& box);

}  // namespace corvane
