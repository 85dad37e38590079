#include "console/message_boxes.h"

#include <string>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace corvane;

namespace {

// Shows the box, reads its title and text and presses a button or, with none, Escape.
struct Shown {
  Shown(const MessageBox& box, QMessageBox::StandardButton press) {
    QTimer::singleShot(0, [&] {
      auto* window = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      title = window->windowTitle().toStdString();
      text = window->text().toStdString();
      format = window->textFormat();
      if (press == QMessageBox::NoButton) {
        QTest::keyClick(window, Qt::Key_Escape);
      } else {
        QTest::mouseClick(window->button(press), Qt::LeftButton);
      }
    });
    answer = ShowMessageBox(box);
  }

  std::string title;
  std::string text;
  Qt::TextFormat format = Qt::AutoText;
  MessageBox::Answer answer{};
};

}  // namespace

TEST(ShowMessageBox, AnswersWithTheButtonThatWasPressed) {
  using Kind = MessageBox::Kind;
  using Answer = MessageBox::Answer;
  const struct {
    Kind kind;
    QMessageBox::StandardButton press;
    Answer answer;
  } cases[] = {
      {Kind::Message, QMessageBox::Ok, Answer::OK},
      {Kind::Message, QMessageBox::NoButton, Answer::OK},
      {Kind::Question, QMessageBox::Yes, Answer::Yes},
      {Kind::Question, QMessageBox::No, Answer::No},
      {Kind::Question, QMessageBox::NoButton, Answer::No},
  };
  for (const auto& row : cases) {
    const Shown shown({row.kind, "", "text"}, row.press);
    EXPECT_EQ(shown.answer, row.answer);
  }
}

TEST(ShowMessageBox, ShowsPlainTextUnderTheProgramsNameOrItsOwnTitle) {
  const Shown named({MessageBox::Kind::Message, "", "<b>one</b>\ntwo"}, QMessageBox::Ok);
  EXPECT_EQ(named.title, "Corvane Server");
  EXPECT_EQ(named.text, "<b>one</b>\ntwo");
  EXPECT_EQ(named.format, Qt::PlainText);
  const Shown titled({MessageBox::Kind::Question, "Delete Network", "?"}, QMessageBox::No);
  EXPECT_EQ(titled.title, "Delete Network");
}
