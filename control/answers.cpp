#include "control/answers.h"

#include <utility>

#include <QJsonDocument>

#include "framework/text.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxText = 1024;
constexpr qsizetype kMaxTable = qsizetype{16} << 20;

}  // namespace

QByteArray Line(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray DoneLine(QJsonObject fields) {
  fields["ok"] = true;
  return Line(fields);
}

QByteArray DoneLine(const std::string& text) {
  return DoneLine(QJsonObject{{"text", DisplayText(text)}});
}

QByteArray RefusalLine(const std::string& error, QJsonObject fields) {
  fields["ok"] = false;
  fields["error"] = DisplayText(error);
  return Line(fields);
}

QString AnswerText(std::string_view text) {
  const QString shown = DisplayText(Beginning(text, kMaxText));
  return text.size() > kMaxText ? shown + QChar(0x2026) : shown;
}

void RowsAnswer::Add(const QJsonObject& row) {
  if (myRows.size() > kMaxTable) {
    myIsComplete = false;
    return;
  }
  if (!myRows.isEmpty()) myRows += ',';
  myRows += corvane::Line(row);
}

QByteArray RowsAnswer::Line() const {
  return "{\"ok\":true,\"complete\":" + QByteArray(myIsComplete ? "true" : "false") +
         ",\"rows\":[" + myRows + "]}";
}

}  // namespace corvane
