#include "tabbeddialog.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

class TestTabbedDialog : public QObject
{
    Q_OBJECT

private slots:
    // Tabs announce edits while they are filled, before the dialog shows: only later ones bring
    // the save button. A part that can't be saved holds the button back until it says otherwise,
    // whatever the other parts say meanwhile.
    void saveAppearsOnEditAndWaitsForEveryPart()
    {
        TabbedDialog dialog;
        dialog.showSaveButton();
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
