#include "framework/message_box.h"

#include <cstdio>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {

MessageBox::Answer MessageToStandardError(const MessageBox& box) {
  std::string output;
  const std::size_t lines = CountFields(box.text, '\n');
  for (std::size_t line = 1; line <= lines; ++line) {
    output += Escaped(NthField(box.text, '\n', line)) + '\n';
  }
  // A failure here cannot be reported anywhere.
  static_cast<void>(std::fwrite(output.data(), 1, output.size(), stderr));
  static_cast<void>(std::fflush(stderr));
  return box.kind == MessageBox::Kind::Question ? MessageBox::Answer::No : MessageBox::Answer::OK;
}

}  // namespace corvane
