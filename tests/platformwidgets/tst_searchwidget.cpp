#include "searchwidget.h"

#include <QAction>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>

#include <algorithm>

namespace {
// What the operator does after typing.
enum class Then { Nothing, PressReturn, ClickClearButton, EraseByHand, PressEscape };
}  // namespace

Q_DECLARE_METATYPE(Then)

class TestSearchWidget : public QObject
{
    Q_OBJECT

private slots:
    void searchesOncePerInput_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<Then>("then");
        QTest::addColumn<QString>("searched");
        QTest::addColumn<bool>("atOnce");
        QTest::newRow("typing waits for a pause") << "Ivanov" << Then::Nothing << "Ivanov" << false;
        QTest::newRow("Return searches at once") << "12" << Then::PressReturn << "12" << true;
        QTest::newRow("clear button") << "ab" << Then::ClickClearButton << "" << true;
        QTest::newRow("erased by hand") << "ab" << Then::EraseByHand << "" << true;
        QTest::newRow("Escape") << "ab" << Then::PressEscape << "" << true;
    }

    void searchesOncePerInput()
    {
        QFETCH(QString, typed);
        QFETCH(Then, then);
        QFETCH(QString, searched);
        QFETCH(bool, atOnce);

        SearchWidget search;
        QLineEdit* edit = search.lineEdit();
        QSignalSpy started(&search, &SearchWidget::startSearch);
        QTest::keyClicks(edit, typed);
        switch (then) {
        case Then::Nothing:
            break;
        case Then::PressReturn:
            QTest::keyClick(edit, Qt::Key_Return);
            break;
        case Then::ClickClearButton: {
            const QList<QToolButton*> buttons = edit->findChildren<QToolButton*>();
            const auto clear = std::find_if(buttons.cbegin(), buttons.cend(), [](QToolButton* button) {
                return button->defaultAction()
                    && button->defaultAction()->objectName() == QLatin1String("_q_qlineeditclearaction");
            });
            QVERIFY(clear != buttons.cend());
            (*clear)->click();
            break;
        }
        case Then::PressEscape:
            QTest::keyClick(edit, Qt::Key_Escape);
            QVERIFY(edit->text().isEmpty());
            break;
        case Then::EraseByHand:
            for (int i = 0; i < typed.size(); ++i)
                QTest::keyClick(edit, Qt::Key_Backspace);
            break;
        }

        if (!atOnce) {
            QCOMPARE(started.count(), 0);
            QTRY_COMPARE(started.count(), 1);
        }
        QCOMPARE(started.count(), 1);
        QCOMPARE(started.first().first().toString(), searched);
        // Long enough for the pause after typing to have passed for sure: no second search.
        QTest::qWait(600);
        QCOMPARE(started.count(), 1);
    }

    void ctrlFBringsTheCursorFromAnywhereInTheWindow()
    {
        QWidget window;
        auto* table = new QLineEdit(&window);
        auto* search = new SearchWidget(&window);
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(table);
        layout->addWidget(search);
        search->setText(QStringLiteral("Иванов"));
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        table->setFocus();
        QTest::keyClick(table, Qt::Key_F, Qt::ControlModifier);
        QVERIFY(search->lineEdit()->hasFocus());
        QCOMPARE(search->lineEdit()->selectedText(), QStringLiteral("Иванов"));

        // Escape on an empty field is left to the window (a dialog closes on it).
        search->setText(QString());
        QSignalSpy started(search, &SearchWidget::startSearch);
        QTest::keyClick(search->lineEdit(), Qt::Key_Escape);
        QCOMPARE(started.count(), 0);
    }
};

QTEST_MAIN(TestSearchWidget)
#include "tst_searchwidget.moc"
