#include "console.h"
#include "constants.h"
#include "localstorage.h"
#include "mainwindow.h"
#include "tabbeddialog.h"
#include "testenvironment.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtTest>

using namespace vorandel;

namespace {

const ObjectInfo& stored(const QString& dataname, TYPE_ID uid)
{
    return LocalStorage::instance()->constObject(uid, dataname);
}

}  // namespace

// The properties dialog in the console as the operator meets it: the console loads the tab and
// the fingerprint window from its plug-in folder, and its embedded server answers.
class TestPropertiesFlow : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    // A store of this run's own: what a run saves, a card given or a car number, is not there at
    // the next.
    QTemporaryDir storeFolder;
    std::unique_ptr<Console> console;
    QList<TYPE_ID> used;  // each test takes requests of its own

    QWidget* tab() const { return console->window()->tabs()->widget(0); }
    QTableView* table() const { return tab()->findChild<QTableView*>(QStringLiteral("tblRequests")); }
    TabbedDialog* dialog() const { return tab()->findChild<TabbedDialog*>(); }
    template <typename T>
    T* in(const char* name) const
    {
        return dialog()->findChild<T*>(QLatin1String(name));
    }

    // A request of that state whose worker is in service, keeping its keys in their usual forms.
    TYPE_ID pick(const QString& state)
    {
        for (const ObjectInfo& request : *LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME)) {
            const QHash<QString, QString>& p = request.parameters;
            const ObjectInfo& worker = stored(SUBJECT_DATANAME, p.value("PT_SUBJECT_ID").toUInt());
            const QDateTime end = QDateTime::fromString(p.value("PT_DATE_END"), Qt::ISODate);
            if (p.value("PT_STATE") != state || used.contains(request.uid) || !worker.isValid()
                || isDismissed(worker) || p.value("PT_TO_DEPARTMENT").isEmpty()
                || end.toString(Qt::ISODate) != p.value("PT_DATE_END") || worker.inherits.count(INHERIT_CARD) > 1)
                continue;
            used.append(request.uid);
            return request.uid;
        }
        return 0;
    }

    QModelIndex row(TYPE_ID uid, int column) const
    {
        const QAbstractItemModel* model = table()->model();
        for (int r = 0; r < model->rowCount(); ++r) {
            if (model->index(r, 0).data().toUInt() == uid)
                return model->index(r, column);
        }
        return {};
    }

    // Selects the row and presses "Свойства", as the operator would.
    TabbedDialog* open(TYPE_ID uid)
    {
        const QModelIndex found = row(uid, 0);
        if (!found.isValid())
            return nullptr;
        table()->selectionModel()->setCurrentIndex(found, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        tab()->findChild<QAction*>(QStringLiteral("actionSettings"))->trigger();
        return dialog();
    }

    void type(const char* name, const QString& text)
    {
        auto* line = in<QLineEdit>(name);
        line->setText(text);
        emit line->textEdited(text);
    }

    void save()
    {
        const QList<QPushButton*> buttons = dialog()->findChildren<QPushButton*>();
        for (QPushButton* button : buttons) {
            if (button->text() == QStringLiteral("Сохранить") && button->isVisible() && button->isEnabled()) {
                button->click();
                return;
            }
        }
        QFAIL("no save button to press");
    }

    void closeDialog()
    {
        if (TabbedDialog* open = dialog())
            open->close();
        QTRY_VERIFY(!dialog());
    }

    template <typename T>
    static T* window(const QString& name)
    {
        const QList<QWidget*> windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (window->objectName() == name && window->isVisible())
                return qobject_cast<T*>(window);
        }
        return nullptr;
    }

private slots:
    void initTestCase()
    {
        ConsoleOptions options;
        options.pluginDir = qEnvironmentVariable("VD_PLUGIN_DIR");
        options.database = vdserver::StoreLocation::file(storeFolder.filePath(QStringLiteral("store.sqlite")));
        console = std::make_unique<Console>(options);
        QVERIFY(console->logIn());
        console->start();
        QCOMPARE(console->window()->tabs()->count(), 1);
    }

    void cleanup() { closeDialog(); }

    void cleanupTestCase() { console.reset(); }

    // Two fields changed and saved: the row and the card follow the server's copy (exactly what
    // goes out is left to the dialog's own suite).
    void editAndSave()
    {
        const TYPE_ID uid = pick("0");
        QVERIFY(uid);
        QVERIFY(open(uid));
        const QDateTime end = in<QDateTimeEdit>("dtEnd")->dateTime().addDays(3);
        type("leCarNumber", "Т404ТТ77");
        in<QDateTimeEdit>("dtEnd")->setDateTime(end);
        save();

        QTRY_COMPARE(row(uid, 16).data().toString(), QStringLiteral("Т404ТТ77"));
        QCOMPARE(row(uid, 9).data().toDateTime(), end);
        QTRY_VERIFY(tab()->findChild<QTextBrowser*>("textBrowser")->toPlainText().contains(QStringLiteral("Т404ТТ77")));
        QVERIFY(dialog()->isVisible());
        QVERIFY(!dialog()->isSaveButtonShown());
        QCOMPARE(stored(PASS_REQUEST_DATANAME, uid).parameters.value("PT_DATE_END"), end.toString(Qt::ISODate));
    }

    // The reader waits; the operator holds a card to it; the card is the worker's once saved.
    void aCardFromTheReader()
    {
        const TYPE_ID uid = pick("0");
        QVERIFY(uid);
        QVERIFY(open(uid));
        const TYPE_ID worker = stored(PASS_REQUEST_DATANAME, uid).parameters.value("PT_SUBJECT_ID").toUInt();
        dialog()->subTabs(4)->setCurrentIndex(1);
        in<QPushButton>("readCardButton")->click();
        QDialog* reader = nullptr;
        QTRY_VERIFY((reader = window<QDialog>("CardReaderDialog")));
        auto* number = reader->findChild<QLineEdit*>("numberEdit");
        number->setText("5550001");
        for (QPushButton* button : reader->findChildren<QPushButton*>()) {
            if (button->text() == QStringLiteral("Поднести карту"))
                button->click();
        }
        QTRY_VERIFY(!in<QListWidget>("cardList")->findItems("5550001", Qt::MatchExactly).isEmpty());
        save();
        QTRY_VERIFY(LocalStorage::instance()->card(5550001, false).isValid());
        QCOMPARE(ot_card::uid(LocalStorage::instance()->card(5550001, false)), worker);
    }

    // Two fingers scanned in the console's fingerprint window: the dialog counts them.
    void enrolTwoFingers()
    {
        const TYPE_ID uid = pick("0");
        QVERIFY(uid);
        QVERIFY(open(uid));
        dialog()->subTabs(4)->setCurrentIndex(2);
        in<QPushButton>("fingerprintsButton")->click();
        QWidget* prints = nullptr;
        QTRY_VERIFY((prints = window<QWidget>("FingerprintWidget")));
        QTest::qWait(500);  // the worker's prints arrive
        QList<QCheckBox*> free;
        int held = 0;
        for (QCheckBox* finger : prints->findChildren<QCheckBox*>()) {
            if (finger->text().endsWith(QStringLiteral("✓")))
                ++held;
            else
                free.append(finger);
        }
        QVERIFY(free.size() >= 2);
        free.at(0)->setChecked(true);
        free.at(1)->setChecked(true);
        prints->findChild<QPushButton*>("scanButton")->click();
        QTRY_COMPARE_WITH_TIMEOUT(prints->findChild<QLabel*>("statusLabel")->text(),
                                  QStringLiteral("Отсканировано и сохранено отпечатков: 2"), 10000);
        prints->findChild<QPushButton*>("closeButton")->click();
        QTRY_COMPARE(in<QLabel>("fingersCount")->text(), QString::number(held + 2));
    }
};

QTEST_MAIN(TestPropertiesFlow)
#include "tst_propertiesflow.moc"
