#include "searchwidget.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

namespace {
// What the operator does after typing.
enum class Then { Nothing, PressReturn, EraseByHand, PressEscape };
}  // namespace

Q_DECLARE_METATYPE(Then)

class TestSearchWidget : public QObject
{
    Q_OBJECT

private slots:
    // Each input is searched once: typed text after a pause, and at once on Return or when the
    // field is emptied. A second search of the same text would refill the table for nothing.
    void searchesOncePerInput_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<Then>("then");
        QTest::addColumn<QString>("searched");
        QTest::addColumn<bool>("atOnce");
        QTest::newRow("typing waits for a pause") << "Ivanov" << Then::Nothing << "Ivanov" << false;
        QTest::newRow("Return searches at once") << "12" << Then::PressReturn << "12" << true;
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
};

QTEST_MAIN(TestSearchWidget)
#include "tst_searchwidget.moc"
