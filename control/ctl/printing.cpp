#include "control/ctl/printing.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <vector>

#include <QJsonArray>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::ctl {
namespace {

using Row = std::vector<QString>;

// Longer than any of the server's lines: something else may answer.
constexpr std::size_t kLongestLine = 8192;  // bytes

int thePrintingError = 0;

std::string LineText(const QJsonValue& value) {
  std::string line;
  const bool isWhole = AppendEscaped(line, TextFromDisplay(value.toString()), kLongestLine);
  return isWhole ? line : line + "...";
}

QString CellText(const QJsonValue& value) {
  if (value.isBool()) return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
  if (value.isDouble()) return QString::number(value.toInteger());
  return VisibleText(TextFromDisplay(value.toString()));
}

void PrintTable(const std::vector<Row>& rows) {
  std::vector<qsizetype> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], row[i].size());
  }
  for (const Row& row : rows) {
    QString line;
    for (std::size_t i = 0; i < row.size(); ++i)
      line += row[i].leftJustified(widths[i] + 2);
    PrintLine(line.trimmed().toUtf8());
  }
}

void PrintRows(const std::vector<const char*>& columns, const QJsonArray& objects) {
  std::vector<Row> rows{{columns.begin(), columns.end()}};
  for (QString& heading : rows.front())
    heading = heading.toUpper();
  for (const auto& object : objects) {
    Row& row = rows.emplace_back();
    for (const char* column : columns)
      row.push_back(CellText(object[QLatin1String(column)]));
  }
  PrintTable(rows);
}

void PrintStatus(const QJsonObject& answer) {
  std::vector<Row> rows;
  for (const char* field : {"version", "up-since", "rules", "listening", "address", "port",
                            "connections", "memory", "output-held", "input-held",
                            "messages-per-second", "received-per-second", "sent-per-second"}) {
    rows.push_back({QLatin1String(field), CellText(answer[QLatin1String(field)])});
  }
  PrintTable(rows);
  PrintLine("");
  PrintRows({"name", "users", "max-users", "enabled"}, answer["networks"].toArray());
}

void PrintError(const QString& text) {
  std::fprintf(stderr, "corvanectl: %s\n", LineText(text).c_str());
}

void PrintText(const QJsonValue& text) {
  PrintLine(QByteArray::fromStdString(LineText(text)));
}

}  // namespace

void PrintText(const QByteArray& text) {
  const auto size = static_cast<std::size_t>(text.size());
  const bool isTaken =
      std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
  if (!isTaken && thePrintingError == 0) thePrintingError = errno;
}

void PrintLine(const QByteArray& line) {
  PrintText(line + '\n');
}

int PrintingError() {
  return thePrintingError;
}

void PrintJson(const QByteArray& received) {
  PrintLine(QByteArray::fromStdString(EscapedJson(received.toStdString())));
}

void Print(const Command& command, const QJsonObject& answer) {
  if (answer.contains("error")) {
    PrintError(answer["error"].toString());
    for (const auto& address : answer["addresses"].toArray())
      PrintError("  " + address.toString());
  } else if (answer.contains("rows")) {
    PrintRows(command.columns, answer["rows"].toArray());
    if (!answer["complete"].toBool()) PrintError("there are more than fit into an answer");
  } else if (answer.contains("line")) {
    PrintText(answer["line"]);
  } else if (answer.contains("lines")) {
    for (const auto& line : answer["lines"].toArray())
      PrintText(line);
  } else if (answer.contains("networks")) {
    PrintStatus(answer);
  } else {
    PrintText(answer["text"]);
  }
}

}  // namespace corvane::ctl
