#include "searchwidget.h"

#include <QAction>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

class TestSearchWidget : public QObject
{
    Q_OBJECT

    // Long enough for the pause after typing to have passed for sure.
    static constexpr int AfterPause = 600;

private slots:
    void typingSearchesOnceAfterAPause()
    {
        SearchWidget search;
        QSignalSpy started(&search, &SearchWidget::startSearch);
        QTest::keyClicks(search.lineEdit(), QStringLiteral("Ivanov"));
        QCOMPARE(started.count(), 0);
        QTRY_COMPARE(started.count(), 1);
        QCOMPARE(started.first().first().toString(), QStringLiteral("Ivanov"));
        QTest::qWait(AfterPause);
        QCOMPARE(started.count(), 1);
    }

    void returnSearchesAtOnceAndOnlyThen()
    {
        SearchWidget search;
        QSignalSpy started(&search, &SearchWidget::startSearch);
        QTest::keyClicks(search.lineEdit(), QStringLiteral("12"));
        QTest::keyClick(search.lineEdit(), Qt::Key_Return);
        QCOMPARE(started.count(), 1);
        QCOMPARE(started.first().first().toString(), QStringLiteral("12"));
        QTest::qWait(AfterPause);
        QCOMPARE(started.count(), 1);
    }

    void clearingSearchesAtOnceWithNothing_data()
    {
        QTest::addColumn<bool>("byClearButton");
        QTest::newRow("clear button") << true;
        QTest::newRow("erased by hand") << false;
    }

    void clearingSearchesAtOnceWithNothing()
    {
        QFETCH(bool, byClearButton);
        SearchWidget search;
        QSignalSpy started(&search, &SearchWidget::startSearch);
        QTest::keyClicks(search.lineEdit(), QStringLiteral("ab"));
        if (byClearButton) {
            QToolButton* clear = nullptr;
            const QList<QToolButton*> buttons = search.lineEdit()->findChildren<QToolButton*>();
            for (QToolButton* button : buttons)
                if (button->defaultAction() && button->defaultAction()->objectName() == QLatin1String("_q_qlineeditclearaction"))
                    clear = button;
            QVERIFY(clear);
            clear->click();
        } else {
            QTest::keyClick(search.lineEdit(), Qt::Key_Backspace);
            QTest::keyClick(search.lineEdit(), Qt::Key_Backspace);
        }
        QCOMPARE(started.count(), 1);
        QCOMPARE(started.first().first().toString(), QString());
        QTest::qWait(AfterPause);
        QCOMPARE(started.count(), 1);
    }

    void theOwnersTextStartsNoSearch()
    {
        SearchWidget search;
        QSignalSpy started(&search, &SearchWidget::startSearch);
        search.setText(QStringLiteral("Петров"));
        QCOMPARE(search.text(), QStringLiteral("Петров"));
        QTest::qWait(AfterPause);
        QCOMPARE(started.count(), 0);
    }

    void advancedButtonCanBeHidden()
    {
        SearchWidget search;
        search.setPlaceholderText(QStringLiteral("Фильтр"));
        QCOMPARE(search.placeholderText(), QStringLiteral("Фильтр"));
        QVERIFY(search.lineEdit()->isClearButtonEnabled());
        auto* advanced = search.findChild<QToolButton*>();
        QVERIFY(advanced);
        QSignalSpy requested(&search, &SearchWidget::advancedSearchRequested);
        advanced->click();
        QCOMPARE(requested.count(), 1);
        search.show();
        QVERIFY(advanced->isVisible());
        search.showAdvancedButton(false);
        QVERIFY(!advanced->isVisible());
    }
};

QTEST_MAIN(TestSearchWidget)
#include "tst_searchwidget.moc"
