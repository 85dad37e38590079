#include "map/administration.h"

#include <QMessageBox>
#include <QPushButton>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/text_dialog.h"

namespace corvane::map {
namespace {

constexpr std::size_t kMaxShownName = 60;

}  // namespace

Administration::Administration(client::Connection& connection, MessagesPane& messages,
                               QWidget& window)
    : myConnection(connection), myMessages(messages), myWindow(window) {
  myBansReceived = myConnection.BansReceived.Connect([this](const client::BanList& list) {
    if (myBans) myBans->Show(list);
  });
}

// False, with a message, if the name holds the bar that separates a command's fields.
bool Administration::CanName(const std::string& user) const {
  if (user.find('|') == std::string::npos) return true;
  myMessages.Add(
      tr("%1 cannot be named to the server, since the name holds a bar.").arg(DisplayText(user)));
  return false;
}

void Administration::Kick(const std::string& user) {
  if (!CanName(user)) return;
  auto* question = new QMessageBox(
      QMessageBox::Question, tr("Kick"),
      tr("Kick %1? It may come back.").arg(VisibleText(user, kMaxShownName)), {}, &myWindow);
  question->setObjectName(QStringLiteral("KickQuestion"));
  question->setAttribute(Qt::WA_DeleteOnClose);
  question->setTextFormat(Qt::PlainText);
  const QPushButton* kick = question->addButton(tr("&Kick"), QMessageBox::AcceptRole);
  question->setDefaultButton(question->addButton(tr("Cancel"), QMessageBox::RejectRole));
  QObject::connect(kick, &QPushButton::clicked, question, [this, user] {
    myConnection.Kick(user);
    myMessages.Add(tr("You have kicked %1.").arg(DisplayText(user)));
  });
  question->open();
}

void Administration::Ban(const std::string& user) {
  if (!CanName(user)) return;
  auto* dialog = new TextDialog(
      tr("Ban %1").arg(VisibleText(user)),
      tr("Everybody with the same address is banned too, and from every network of the server."),
      tr("&Reason:"), tr("&Ban"), myWindow);
  dialog->Confirmed = [this, user](const QString& reason) {
    myConnection.BanUser(user, TextFromDisplay(reason));
    myMessages.Add(tr("You have banned %1.").arg(DisplayText(user)));
  };
  dialog->open();
}

void Administration::SendMessage() {
  auto* dialog = new TextDialog(
      tr("Message to the Network"),
      tr("Careful: a server under classic rules ends when a message is sent while somebody is "
         "connected to it who has chosen no network yet."),
      tr("&Message:"), tr("&Send"), myWindow);
  dialog->Confirmed = [this](const QString& text) {
    myConnection.SendMessage(TextFromDisplay(text));
  };
  dialog->open();
}

void Administration::ShowBans() {
  if (!myBans) {
    myBans = new BansDialog(myWindow);
    myBans->Lifted = [this](const std::string& id) {
      myConnection.LiftBan(id);
      myConnection.AskForBans();
    };
    myBans->open();
  }
  myConnection.AskForBans();
}

}  // namespace corvane::map
