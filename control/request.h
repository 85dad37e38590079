#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <QJsonObject>

namespace corvane {

// Why a request is not carried out. The text and the fields become the answer.
class Refused : public std::runtime_error {
 public:
  explicit Refused(const std::string& why, QJsonObject more = {})
      : std::runtime_error(why), fields(std::move(more)) {}

  const QJsonObject fields;
};

// A request that no server would carry out; the field "misused" says so.
class Misused : public Refused {
 public:
  explicit Misused(const std::string& why) : Refused(why, {{"misused", true}}) {}
};

// The fields of a request. Throws Misused, naming what was expected, if a required field is missing
// or has the wrong type. Any bytes are a text as {"latin-1": "..."}, in which a character is a
// byte.
class Request {
 public:
  // `line` is one JSON object.
  explicit Request(const QByteArray& line);

  std::string Text(const char* name) const;
  std::optional<std::string> OptionalText(const char* name) const;
  std::optional<std::int32_t> OptionalNumber(const char* name, std::int32_t min,
                                             std::int32_t max) const;
  bool Flag(const char* name, bool ifMissing = false) const;
  // An object, and a list of objects that may be missing, with fields of their own.
  Request Object(const char* name) const;
  std::vector<Request> Objects(const char* name) const;

 private:
  explicit Request(QJsonObject fields) : myFields(std::move(fields)) {}

  QJsonObject myFields;
};

}  // namespace corvane
