#include "map/accessible_map.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QWidget>

namespace corvane::map {
namespace {

// Qt asks for each class that an object inherits, the most derived first.
QAccessibleInterface* MakeAccessible(const QString& type, QObject* object) {
  if (type != QLatin1String("QGraphicsView")) return nullptr;
  return new QAccessibleWidget(qobject_cast<QWidget*>(object), QAccessible::Canvas);
}

}  // namespace

void InstallAccessibleMap() {
  QAccessible::installFactory(&MakeAccessible);
}

}  // namespace corvane::map
