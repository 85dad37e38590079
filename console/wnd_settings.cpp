#include "console/wnd_settings.h"

#include <string>
#include <utility>

#include <QFormLayout>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include "app/operator.h"
#include "framework/numbers.h"
#include "framework/text.h"
#include "storage/app_settings.h"

namespace corvane {
namespace {

constexpr double kMinPort = 10000;
constexpr double kMaxPort = 65535;
constexpr double kMinConnections = 2;
constexpr int kFieldWidth = 180;

QLineEdit* NumberField(int digits, QWidget* parent) {
  auto* field = new QLineEdit(parent);
  const QRegularExpression mask(QStringLiteral("[0-9]{0,%1}").arg(digits));
  field->setValidator(new QRegularExpressionValidator(mask, field));
  FitDigits(*field, digits);
  return field;
}

double ValueOf(const QLineEdit& field) {
  return NumberFromText(TextFromDisplay(field.text()));
}

// Leaves the field unchanged if its mask does not accept the number.
void SetValue(QLineEdit& field, double value) {
  QString text = QString::number(value);
  int position = 0;
  if (field.validator()->validate(text, position) == QValidator::Acceptable) field.setText(text);
}

}  // namespace

wndSettings::wndSettings(Operator& op, std::vector<NetworkInterface> interfaces, QWidget& owner)
    : Dialog(QStringLiteral("wndSettings"), QStringLiteral("Settings"), owner),
      myOperator(op),
      myInterfaces(std::move(interfaces)) {
  LayOut();
  AppSettings& settings = myOperator.Settings();
  fldConns->setText(DisplayText(settings.GetValue("MaxConns", "100")));
  fldPort->setText(DisplayText(settings.GetValue("AttachedPort", "12000")));
  SelectInterface(settings.GetValue("AttachedNIC", ""));

  connect(fldPort, &QLineEdit::textChanged, this, &wndSettings::fldPort_TextChange);
  udConns->Up = [this] { udConns_Up(); };
  udConns->Down = [this] { udConns_Down(); };
  connect(btnOK, &QPushButton::clicked, this, &wndSettings::btnOK_Action);
  connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void wndSettings::LayOut() {
  pmNIC = new QComboBox(this);
  fldConns = NumberField(4, this);
  udConns = new UpDownArrows(*fldConns, this);
  fldPort = NumberField(5, this);
  btnOK = new QPushButton(QStringLiteral("OK"), this);
  btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
  pmNIC->setMinimumWidth(kFieldWidth);
  fldConns->setAccessibleName(QStringLiteral("Maximum Connections"));
  btnOK->setDefault(true);

  auto* form = new QFormLayout;
  form->addRow(QStringLiteral("Network Interface:"), pmNIC);
  form->addRow(QStringLiteral("Maximum Connections:"), FieldWithArrows(fldConns, udConns));
  form->addRow(QStringLiteral("Port:"), fldPort);
  auto* column = new QVBoxLayout(this);
  column->addLayout(form);
  column->addLayout(ButtonRow({btnOK, btnCancel}));
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void wndSettings::SelectInterface(const std::string& macAddress) {
  int selected = -1;
  for (const NetworkInterface& candidate : myInterfaces) {
    if (selected < 0 && SameText(candidate.MACAddress, macAddress)) selected = pmNIC->count();
    pmNIC->addItem(DisplayText(candidate.IPAddress));
  }
  pmNIC->setCurrentIndex(selected);
}

void wndSettings::udConns_Up() const {
  SetValue(*fldConns, ValueOf(*fldConns) + 1);
}

void wndSettings::udConns_Down() const {
  SetValue(*fldConns, ValueOf(*fldConns) - 1);
  // Steps from 2 to 1, which OK refuses, and from 1 back to 2: deliberate.
  if (fldConns->text() == QStringLiteral("0")) fldConns->setText(QStringLiteral("2"));
}

void wndSettings::fldPort_TextChange() const {
  if (ValueOf(*fldPort) <= kMaxPort) return;
  SetValue(*fldPort, kMaxPort);
  // So that typing replaces it.
  fldPort->selectAll();
}

std::string wndSettings::Fault() const {
  if (pmNIC->currentIndex() < 0) return "You must select a valid network interface.";
  if (fldPort->text().isEmpty() || ValueOf(*fldPort) < kMinPort) {
    return "You must select a valid port number greater than or equal to 10000.";
  }
  if (fldConns->text().isEmpty() || ValueOf(*fldConns) < kMinConnections) {
    return "You must select no fewer than 2 maximum connections.";
  }
  return {};
}

void wndSettings::btnOK_Action() {
  MessageBox box;
  box.text = Fault();
  if (!box.text.empty()) {
    myOperator.ShowMessage(box);
    return;
  }
  const auto selected = static_cast<std::size_t>(pmNIC->currentIndex());
  if (myOperator.ChangeSetting("AttachedNIC", myInterfaces[selected].MACAddress) &&
      myOperator.ChangeSetting("AttachedPort", TextFromDisplay(fldPort->text())) &&
      myOperator.ChangeSetting("MaxConns", TextFromDisplay(fldConns->text()))) {
    return accept();
  }
  box.text = "The settings were not saved:\n" + myOperator.Settings().SaveError();
  myOperator.ShowMessage(box);
}

}  // namespace corvane
