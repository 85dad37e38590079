#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace corvane {

// What the clients of the local socket are answered: one JSON object in a line, whose "ok" tells
// whether the request was carried out.

QByteArray Line(const QJsonObject& object);

// Done: with these fields, or with a sentence for a person.
QByteArray DoneLine(QJsonObject fields = {});
QByteArray DoneLine(const std::string& text);

// Not done, and why.
QByteArray RefusalLine(const std::string& error, QJsonObject fields = {});

// A text of anybody's, which may be of any length; past 1 KiB it is cut.
QString AnswerText(std::string_view text);

// A table. Rows past 16 MiB are left out, which "complete" tells.
class RowsAnswer {
 public:
  void Add(const QJsonObject& row);
  QByteArray Line() const;

 private:
  QByteArray myRows;
  bool myIsComplete = true;
};

}  // namespace corvane
