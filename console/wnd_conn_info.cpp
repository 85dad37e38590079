#include "console/wnd_conn_info.h"

#include <QVBoxLayout>

#include "framework/visible_text.h"
#include "server/client_socket.h"

namespace corvane {
namespace {

constexpr std::size_t kMaxPart = 60;
constexpr int kLinesOfRoom = 4;
constexpr int kWidth = 260;

QString Shown(const std::string& part) {
  return VisibleText(part, kMaxPart);
}

}  // namespace

wndConnInfo::wndConnInfo(const ClientSocket& user, QWidget& owner)
    : Dialog(QStringLiteral("wndConnInfo"), QStringLiteral("Connection Info"), owner) {
  lblInfo = new QLabel(this);
  PushButton1 = new QPushButton(QStringLiteral("Close"), this);
  lblInfo->setTextFormat(Qt::PlainText);
  lblInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);
  lblInfo->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  lblInfo->setMinimumSize(kWidth, kLinesOfRoom * fontMetrics().lineSpacing());
  lblInfo->setText(Shown(user.ClientCity) + ", " + Shown(user.ClientState) + " " +
                   Shown(user.ClientZip) + "\n" + Shown(user.ClientCountry) + "\nGMT " +
                   Shown(user.ClientTimeZone));

  auto* column = new QVBoxLayout(this);
  column->addWidget(lblInfo);
  column->addLayout(ButtonRow({PushButton1}));
  column->setSizeConstraint(QLayout::SetFixedSize);
  PushButton1->setDefault(true);
  connect(PushButton1, &QPushButton::clicked, this, &QDialog::reject);
}

}  // namespace corvane
