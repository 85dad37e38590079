#include <QByteArray>

#include "platform/prepare_process.h"

namespace corvane {

void PrepareProcess() {
  // Qt's just-in-time compiled expressions keep a thread_local pointer. Built with MinGW, the end
  // of a thread frees that memory before it runs the pointer's destructor, which then reads
  // garbage; the fault leaves a lock taken, and the program hangs when it exits.
  qputenv("QT_ENABLE_REGEXP_JIT", QByteArrayLiteral("0"));
}

}  // namespace corvane
