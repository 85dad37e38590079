#pragma once

#include <functional>
#include <string>

namespace corvane {

// The contents of a modal box.
struct MessageBox {
  enum class Kind { Message, Question };
  enum class Answer { OK, Yes, No };

  Kind kind = Kind::Message;
  std::string title;  // empty: the program's name
  std::string text;
};

// Shows the box and returns the operator's answer: OK for a message, Yes or No for a question.
// Installed by the console; tests install their own.
using MessageBoxFunction = std::function<MessageBox::Answer(const MessageBox&)>;

// For programs without a window: writes the text to standard error and answers OK to a message and
// No to a question.
MessageBox::Answer MessageToStandardError(const MessageBox& box);

}  // namespace corvane
