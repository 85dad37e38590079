#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace corvane {

// The answers of the local socket: one JSON object a line. Its field "ok" is true if the request
// was carried out.

QByteArray Line(const QJsonObject& object);

// Success, with these fields or with a sentence for people.
QByteArray DoneLine(QJsonObject fields = {});
QByteArray DoneLine(const std::string& text);

// A refusal, with its reason.
QByteArray RefusalLine(const std::string& error, QJsonObject fields = {});

// A text from a client, which may be of any length: cut after 1 KiB.
QString AnswerText(std::string_view text);

// A table. Leaves out rows past 16 MiB; "complete" is false then.
class RowsAnswer {
 public:
  void Add(const QJsonObject& row);
  QByteArray Line() const;

 private:
  QByteArray myRows;
  bool myIsComplete = true;
};

}  // namespace corvane
