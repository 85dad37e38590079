#include "control/ctl/printing.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <vector>

#include <QJsonArray>
#include <QJsonDocument>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::ctl {
namespace {

using Row = std::vector<QString>;

// Longer than any line of the server. Another program may answer in its place.
constexpr std::size_t kMaxLine = 8192;  // bytes

QByteArray LineText(const QJsonValue& value) {
  std::string line;
  const bool isWhole = AppendEscaped(line, TextFromDisplay(value.toString()), kMaxLine);
  return QByteArray::fromStdString(line) + (isWhole ? "\n" : "...\n");
}

QString CellText(const QJsonValue& value) {
  if (value.isBool()) return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
  if (value.isDouble()) return QString::number(value.toInteger());
  if (value.isArray()) {
    QStringList texts;
    for (const auto& element : value.toArray())
      texts.push_back(CellText(element));
    return texts.join(' ');
  }
  return VisibleText(TextFromDisplay(value.toString()));
}

QByteArray TableText(const std::vector<Row>& rows) {
  std::vector<qsizetype> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], row[i].size());
  }
  QString text;
  for (const Row& row : rows) {
    QString line;
    for (std::size_t i = 0; i < row.size(); ++i)
      line += row[i].leftJustified(widths[i] + 2);
    text += line.trimmed() + '\n';
  }
  return text.toUtf8();
}

QByteArray RowsText(const std::vector<const char*>& columns, const QJsonArray& objects) {
  std::vector<Row> rows{{columns.begin(), columns.end()}};
  for (QString& heading : rows.front())
    heading = heading.toUpper();
  for (const auto& object : objects) {
    Row& row = rows.emplace_back();
    for (const char* column : columns)
      row.push_back(CellText(object[QLatin1String(column)]));
  }
  return TableText(rows);
}

QByteArray StatusText(const QJsonObject& answer) {
  std::vector<Row> rows;
  for (const char* field : {"version", "up-since", "rules", "listening", "address", "port",
                            "reachable-at", "connections", "memory", "output-held", "input-held",
                            "messages-per-second", "received-per-second", "sent-per-second"}) {
    rows.push_back({QLatin1String(field), CellText(answer[QLatin1String(field)])});
  }
  return TableText(rows) + '\n' +
         RowsText({"name", "users", "max-users", "enabled"}, answer["networks"].toArray());
}

QByteArray EventText(const QJsonObject& event) {
  QString text = event["time"].toString() + ' ' + event["type"].toString();
  for (const char* field : {"reason", "user", "network", "address", "by", "text", "dropped"}) {
    const QJsonValue value = event[QLatin1String(field)];
    if (!value.isUndefined()) text += ' ' + QLatin1String(field) + '=' + CellText(value);
  }
  return LineText(text);
}

void PrintError(const QString& text) {
  std::fprintf(stderr, "corvanectl: %s", LineText(text).constData());
}

}  // namespace

void Printer::PrintText(const QByteArray& text) {
  const auto size = static_cast<std::size_t>(text.size());
  const bool isTaken =
      std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
  if (!isTaken && myError == 0) myError = errno;
}

void Printer::PrintLine(const QString& line) {
  PrintText(LineText(line));
}

void Printer::PrintJson(const QByteArray& received) {
  PrintText(QByteArray::fromStdString(EscapedJson(received.toStdString())) + '\n');
}

void Printer::Print(const Command& command, const QJsonObject& answer) {
  if (answer.contains("error")) {
    PrintError(answer["error"].toString());
    for (const auto& address : answer["addresses"].toArray())
      PrintError("  " + address.toString());
  } else if (answer.contains("rows")) {
    PrintText(RowsText(command.columns, answer["rows"].toArray()));
    if (!answer["complete"].toBool()) PrintError("there are more rows than fit into an answer");
  } else if (answer.contains("lines")) {
    for (const auto& line : answer["lines"].toArray())
      PrintText(LineText(line));
  } else if (answer.contains("document")) {
    PrintJson(QJsonDocument(answer["document"].toObject()).toJson(QJsonDocument::Compact));
  } else if (answer.contains("type")) {
    PrintText(EventText(answer));
  } else if (answer.contains("networks")) {
    PrintText(StatusText(answer));
  } else {
    PrintText(LineText(answer[answer.contains("line") ? "line" : "text"]));
  }
}

}  // namespace corvane::ctl
