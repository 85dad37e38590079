#include "platform/qt_noise.h"

#include <QString>
#include <QtGlobal>

namespace corvane {
namespace {

QtMessageHandler usualHandler = nullptr;

void HandleQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  const bool isNoise = text.startsWith(QLatin1String("QStandardPaths:")) ||
                       text.startsWith(QLatin1String("This plugin does not support"));
  if (!isNoise) usualHandler(type, context, text);
}

}  // namespace

void DropQtNoise() {
  usualHandler = qInstallMessageHandler(HandleQtMessage);
}

}  // namespace corvane
