#include "control/ctl/import_file.h"

#include <cstdio>

#include <QFile>
#include <QJsonDocument>

#include "control/ctl/command_line.h"
#include "control/ctl/server_link.h"
#include "framework/text.h"

namespace corvane::ctl {
namespace {

// The server takes some milliseconds for one. A byte may become six in JSON, and a request has at
// most 1 MiB.
constexpr qsizetype kPortion = qsizetype{32} << 10;
constexpr qint64 kMaxListLine = 1024;
constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF";
constexpr int kProgressLines = 100'000;

}  // namespace

std::optional<QByteArray> ImportFile(ServerLink& server, QJsonObject request) {
  QFile file(request.take("file").toString());
  if (!file.open(QIODevice::ReadOnly)) {
    throw UsageError(file.fileName() + ": " + file.errorString());
  }
  const auto ask = [&server, &request] {
    server.Send(QJsonDocument(request).toJson(QJsonDocument::Compact));
    return server.Receive();
  };
  int lines = 0;
  // Not atEnd(), which holds for a pipe whose writer is slow.
  for (bool isOver = false; !isOver;) {
    QByteArray portion;
    while (portion.size() < kPortion) {
      QByteArray line = file.readLine(kMaxListLine);
      isOver = line.isEmpty();
      if (isOver) break;
      // The rest of a longer line cannot matter: the line is a comment or wrong.
      for (QByteArray rest = line; !rest.isEmpty() && !rest.endsWith('\n');)
        rest = file.readLine(kMaxListLine);
      if (lines == 0 && line.startsWith(kByteOrderMark)) line.remove(0, kByteOrderMark.size());
      if (!line.endsWith('\n')) line += '\n';
      portion += line;
      if (++lines % kProgressLines == 0) std::fprintf(stderr, "%d lines read\n", lines);
    }
    if (file.error() != QFileDevice::NoError) {
      throw UsageError(file.fileName() + ": " + file.errorString());
    }
    request["lines"] = DisplayText(
        std::string_view(portion.constData(), static_cast<std::size_t>(portion.size())));
    auto received = ask();
    const QJsonObject answer = QJsonDocument::fromJson(received.value_or("")).object();
    if (!answer["ok"].toBool()) return received;
    request["import"] = answer["import"];
  }
  request.remove("lines");
  if (lines >= kProgressLines) std::fprintf(stderr, "%d lines read, storing them\n", lines);
  return ask();
}

}  // namespace corvane::ctl
