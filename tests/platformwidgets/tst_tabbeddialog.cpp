#include "tabbeddialog.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QtTest>

#include <algorithm>

class TestTabbedDialog : public QObject
{
    Q_OBJECT

private slots:
    void tabsAndSubTabsKeepTheirIndexes()
    {
        TabbedDialog dialog;
        auto* main = new QWidget;
        auto* worker = new QWidget;
        auto* cards = new QWidget;
        QCOMPARE(dialog.addTab(main, QStringLiteral("Основное")), 0);
        QCOMPARE(dialog.addTab(worker, QStringLiteral("Сотрудник")), 1);
        dialog.setTabEnabled(1, false);

        auto* first = new QWidget;
        auto* second = new QWidget;
        dialog.addSubTab(1, first, QIcon(), QStringLiteral("Карты"));
        dialog.addSubTab(1, second, QIcon(), QStringLiteral("Биометрия"));
        QCOMPARE(dialog.addTab(cards, QStringLiteral("Идентификация")), 2);

        QCOMPARE(dialog.tabCount(), 3);
        QCOMPARE(dialog.tabWidget(0), main);
        QCOMPARE(dialog.tabWidget(1), worker);
        QCOMPARE(dialog.tabWidget(2), cards);
        QVERIFY(!dialog.tabWidget(-1));
        QVERIFY(!dialog.tabWidget(3));
        QVERIFY(!dialog.isTabEnabled(1));
        QVERIFY(dialog.isTabEnabled(2));
        QVERIFY(!dialog.subTabs(0));

        QTabWidget* inner = dialog.subTabs(1);
        QVERIFY(inner);
        QCOMPARE(inner->count(), 3);
        QCOMPARE(inner->widget(0), worker);
        QCOMPARE(inner->tabText(0), QStringLiteral("Сотрудник"));
        QCOMPARE(inner->widget(1), first);
        QCOMPARE(inner->tabText(2), QStringLiteral("Биометрия"));
        QVERIFY(dialog.isAncestorOf(worker));

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no tab 7")));
        QWidget stray;
        dialog.addSubTab(7, &stray, QIcon(), QStringLiteral("Лишняя"));
        QCOMPARE(dialog.tabCount(), 3);
        QVERIFY(!stray.parent());
    }

    void saveAppearsOnEditAndWaitsForEveryPart()
    {
        TabbedDialog dialog;
        dialog.show();
        const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
        const auto found = std::find_if(buttons.cbegin(), buttons.cend(),
                                        [](QPushButton* button) { return button->text() == QStringLiteral("Сохранить"); });
        QVERIFY(found != buttons.cend());
        QPushButton* save = *found;
        QVERIFY(!save->isVisible());

        dialog.showSaveButton();
        QVERIFY(save->isVisible());
        QVERIFY(dialog.isSaveEnabled());

        dialog.setSaveEnabled(QStringLiteral("cards"), false);
        dialog.setSaveEnabled(QStringLiteral("access"), false);
        dialog.setSaveEnabled(QStringLiteral("cards"), false);
        dialog.setSaveEnabled(QStringLiteral("cards"), true);
        QVERIFY(!dialog.isSaveEnabled());
        dialog.setSaveEnabled(QStringLiteral("access"), true);
        QVERIFY(dialog.isSaveEnabled());

        QSignalSpy saving(&dialog, &TabbedDialog::save);
        save->click();
        QCOMPARE(saving.count(), 1);
        dialog.saved();
        QVERIFY(!save->isVisible());
        dialog.showSaveButton();
        QVERIFY(save->isVisible());
    }
};

QTEST_MAIN(TestTabbedDialog)
#include "tst_tabbeddialog.moc"
