#include "console/wnd_message.h"

#include <string>

#include <QVBoxLayout>

#include "app/operator.h"
#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane {
namespace {

constexpr QSize kInitialSize{400, 240};
constexpr int kMinNameLength = 20;

// A row shows the name's visible form and carries its bytes.
void AddRow(QComboBox& box, const std::string& name) {
  box.addItem(VisibleText(name), QByteArray::fromStdString(name));
}

}  // namespace

wndMessage::wndMessage(Operator& op, QWidget& owner)
    : Dialog(QStringLiteral("wndMessage"), QStringLiteral("Send Message to Network(s)"), owner),
      myOperator(op) {
  pmNetwork = new QComboBox(this);
  fldText = new QPlainTextEdit(this);
  btnSend = new QPushButton(QStringLiteral("Send"), this);
  pmNetwork->setAccessibleName(QStringLiteral("Network"));
  pmNetwork->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  pmNetwork->setMinimumContentsLength(kMinNameLength);
  fldText->setAccessibleName(QStringLiteral("Message"));
  fldText->setPlaceholderText(QStringLiteral("Message"));
  fldText->setTabChangesFocus(true);

  auto* column = new QVBoxLayout(this);
  column->addWidget(pmNetwork);
  column->addWidget(fldText);
  column->addLayout(ButtonRow({btnSend}));
  resize(kInitialSize);

  AddRow(*pmNetwork, "(All Networks)");
  for (const NetworkRef& network : op.Networks())
    AddRow(*pmNetwork, network->NetworkName);
  connect(btnSend, &QPushButton::clicked, this, &wndMessage::btnSend_Action);
}

void wndMessage::btnSend_Action() {
  myOperator.Send(TextFromDisplay(fldText->toPlainText()),
                  pmNetwork->currentData().toByteArray().toStdString());
  accept();
}

}  // namespace corvane
