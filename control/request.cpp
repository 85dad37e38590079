#include "control/request.h"

#include <QJsonArray>
#include <QJsonDocument>

#include "framework/text.h"

namespace corvane {
namespace {

[[noreturn]] void RefuseField(const char* name, const std::string& expected) {
  throw Misused('"' + std::string(name) + "\" takes " + expected);
}

}  // namespace

Request::Request(const QByteArray& line) {
  const QJsonDocument document = QJsonDocument::fromJson(line);
  if (!document.isObject()) throw Misused("not a request; expected one JSON object a line");
  myFields = document.object();
}

std::string Request::Text(const char* name) const {
  std::optional<std::string> text = OptionalText(name);
  if (!text || text->empty()) RefuseField(name, "a text that is not empty");
  return *text;
}

std::optional<std::string> Request::OptionalText(const char* name) const {
  const QJsonValue value = myFields[QLatin1String(name)];
  if (value.isUndefined()) return std::nullopt;
  const QJsonValue bytes = value[QLatin1String("latin-1")];
  if (bytes.isString()) return bytes.toString().toLatin1().toStdString();
  if (!value.isString()) RefuseField(name, "a text");
  return TextFromDisplay(value.toString());
}

std::optional<std::int32_t> Request::OptionalNumber(const char* name, std::int32_t min,
                                                    std::int32_t max) const {
  const QJsonValue value = myFields[QLatin1String(name)];
  if (value.isUndefined()) return std::nullopt;
  const int number = value.toInt(min - 1);
  if (number < min || number > max) {
    RefuseField(name, "a number from " + std::to_string(min) + " to " + std::to_string(max));
  }
  return number;
}

Request Request::Object(const char* name) const {
  const QJsonValue value = myFields[QLatin1String(name)];
  if (!value.isObject()) RefuseField(name, "an object");
  return Request(value.toObject());
}

std::vector<Request> Request::Objects(const char* name) const {
  const QJsonValue value = myFields[QLatin1String(name)];
  if (!value.isArray() && !value.isUndefined()) RefuseField(name, "a list of objects");
  std::vector<Request> objects;
  for (const auto& element : value.toArray()) {
    if (!element.isObject()) RefuseField(name, "a list of objects");
    objects.push_back(Request(element.toObject()));
  }
  return objects;
}

bool Request::Flag(const char* name, bool ifMissing) const {
  const QJsonValue value = myFields[QLatin1String(name)];
  if (!value.isUndefined() && !value.isBool()) RefuseField(name, "true or false");
  return value.toBool(ifMissing);
}

}  // namespace corvane
