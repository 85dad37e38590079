#include "tests/support/other_program.h"

#include <fstream>
#include <iterator>

#include <sqlite3.h>

namespace corvane {

void MakeDatabase(const QString& file) {
  std::ifstream script(CORVANE_SCHEMA);
  OtherProgram(file).Run(std::string(std::istreambuf_iterator<char>(script), {}));
}

OtherProgram::OtherProgram(const QString& file) {
  sqlite3_open(file.toUtf8().constData(), &myDatabase);
}

OtherProgram::~OtherProgram() {
  sqlite3_close(myDatabase);
}

std::string OtherProgram::Run(const std::string& statements) {
  std::string output;
  const auto addRow = [](void* text, int count, char** values, char** /*names*/) {
    auto& result = *static_cast<std::string*>(text);
    for (int i = 0; i < count; ++i) {
      result += (i > 0 ? "|" : "");
      result += (values[i] == nullptr ? "NULL" : values[i]);
    }
    result += ';';
    return 0;
  };
  char* error = nullptr;
  sqlite3_exec(myDatabase, statements.c_str(), addRow, &output, &error);
  if (error != nullptr) output += error;
  sqlite3_free(error);
  return output;
}

}  // namespace corvane
