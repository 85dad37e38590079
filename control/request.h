#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include <QJsonObject>

namespace corvane {

// Why a request is not carried out; the client is told, with these fields, of which "misused" says
// that no server would carry it out.
class Refused : public std::runtime_error {
 public:
  explicit Refused(const std::string& why, QJsonObject more = {})
      : std::runtime_error(why), fields(std::move(more)) {}

  const QJsonObject fields;
};

// A request that no server would carry out.
class Misused : public Refused {
 public:
  explicit Misused(const std::string& why) : Refused(why, {{"misused", true}}) {}
};

// What a request says. A field that is needed and not there, or of the wrong kind, is refused with
// what was expected.
class Request {
 public:
  // One JSON object.
  explicit Request(const QByteArray& line);

  std::string Text(const char* name) const;
  std::optional<std::string> OptionalText(const char* name) const;
  std::optional<std::int32_t> OptionalNumber(const char* name, std::int32_t min,
                                             std::int32_t max) const;
  bool Flag(const char* name) const;

 private:
  QJsonObject myFields;
};

}  // namespace corvane
