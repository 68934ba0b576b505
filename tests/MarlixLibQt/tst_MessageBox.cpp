#include <MarlixLibQt/MessageBox.h>

#include <MarlixLib/base/Exception.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace Marlix;

namespace {

/// Waits for the message box to come up, then acts on it as the user would.
void whenBoxIsShown(Function<void(QMessageBox&)> act)
{
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            act(*box);
        }
    });
    timer->start();
}

QAbstractButton* buttonNamed(QMessageBox& box, const QString& text)
{
    for (QAbstractButton* button : box.buttons())
        if (button->text() == text)
            return button;
    return nullptr;
}

} // namespace

class tst_MessageBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userClicksAButton_data();
    void userClicksAButton();
    void boxShowsWhatItIsGiven();
    void customButtonsRunTheirAction();
    void boxWithoutButtonsIsRefused();
};

void tst_MessageBox::userClicksAButton_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("expected");

    QTest::newRow("click OK") << "OK" << true;
    QTest::newRow("click Cancel") << "Cancel" << false;
    QTest::newRow("press Escape") << "Escape" << false;
    QTest::newRow("press Return") << "Return" << true;
}

void tst_MessageBox::userClicksAButton()
{
    QFETCH(QString, action);
    QFETCH(bool, expected);

    whenBoxIsShown([action](QMessageBox& box) {
        if (action == QLatin1String("Escape"))
            QTest::keyClick(&box, Qt::Key_Escape);
        else if (action == QLatin1String("Return"))
            QTest::keyClick(&box, Qt::Key_Return);
        else if (QAbstractButton* button = buttonNamed(box, action))
            QTest::mouseClick(button, Qt::LeftButton);
    });

    QCOMPARE(showOkCancelMessageBox(QMessageBox::Question, "Delete", "Delete the selected nodes?", "", {}, nullptr),
             expected);
}

void tst_MessageBox::boxShowsWhatItIsGiven()
{
    QStringList shown; // title, text, details, icon, whether the window has an icon
    whenBoxIsShown([&](QMessageBox& box) {
        shown = { box.windowTitle(), box.text(), box.detailedText(), QString::number(box.icon()),
            QString::number(!box.windowIcon().isNull()) };
        QTest::mouseClick(buttonNamed(box, QStringLiteral("OK")), Qt::LeftButton);
    });
    showOkMessageBox(QMessageBox::Warning, "Export", "The file could not be written.", "Disk full (errno 28)", {},
                     nullptr);
    QCOMPARE(shown, (QStringList { "Export", "The file could not be written.", "Disk full (errno 28)",
                        QString::number(QMessageBox::Warning), "1" }));
}

void tst_MessageBox::customButtonsRunTheirAction()
{
    QStringList ran;
    const std::array<MessageBoxButton, 3> buttons = {
        MessageBoxButton { QStringLiteral("Save"), QMessageBox::AcceptRole, [&] { ran << QStringLiteral("save"); } },
        MessageBoxButton { QStringLiteral("Discard"), QMessageBox::DestructiveRole,
                           [&] { ran << QStringLiteral("discard"); } },
        MessageBoxButton { QStringLiteral("Cancel"), QMessageBox::RejectRole, [&] { ran << QStringLiteral("cancel"); } },
    };
    whenBoxIsShown([](QMessageBox& box) { QTest::mouseClick(buttonNamed(box, QStringLiteral("Discard")), Qt::LeftButton); });
    showMessageBox(QMessageBox::Question, "Close", "Save the scene?", "", buttons, {}, nullptr);
    QCOMPARE(ran, QStringList { QStringLiteral("discard") });

    whenBoxIsShown([](QMessageBox& box) { box.close(); });
    showMessageBox(QMessageBox::Question, "Close", "Save the scene?", "", buttons, {}, nullptr);
    QCOMPARE(ran, (QStringList { QStringLiteral("discard"), QStringLiteral("cancel") }));
}

void tst_MessageBox::boxWithoutButtonsIsRefused()
{
    QVERIFY_THROWS_EXCEPTION(Exception,
                             showMessageBox(QMessageBox::Information, "Title", "Text", "", {}, {}, nullptr));
}

QTEST_MAIN(tst_MessageBox)
#include "tst_MessageBox.moc"
