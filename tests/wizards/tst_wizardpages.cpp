#include "constants.h"
#include "icontheme.h"
#include "localstorage.h"
#include "objecttreeproxy.h"
#include "parameterizededit.h"
#include "photowidget.h"
#include "promptmenuedit.h"
#include "requestbiometricwizardpage.h"
#include "requestpropertieswizardpage.h"
#include "requestworkerwizardpage.h"
#include "keyboard.h"
#include "testenvironment.h"
#include "vddateedit.h"
#include "vddatetimeedit.h"
#include "vdguiglobals.h"
#include "vdobjectselector.h"

#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>

#include <algorithm>

using namespace vorandel;

namespace {

ObjectInfo object(TYPE_ID uid, const QString& type, TYPE_ID parent, const QHash<QString, QString>& parameters)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parent = parent;
    info.parameters = parameters;
    return info;
}

// An organisation of one firm with two departments, three workers, four access groups (two of
// them hidden), a confirm list and two requests in use.
void fillStore(const QHash<QString, QString>& settings = {})
{
    LocalStorage* store = LocalStorage::instance();
    store->clear();
    store->setDbSettings(settings);
    store->setObjects(ORGSTRUCTURE_DATANAME,
                      {object(1, db::orgstructure::SUBJECT_ROOT, 0, {{"PT_NAME", "Группа"}}),
                       object(2, db::orgstructure::FIRM, 1, {{"PT_NAME", "Завод"}}),
                       object(3, db::orgstructure::DEPARTMENT, 2, {{"PT_NAME", "Бухгалтерия"}}),
                       object(4, db::orgstructure::DEPARTMENT, 2, {{"PT_NAME", "Посетители"}})});
    store->setObjects(SUBJECT_DATANAME,
                      {object(10, db::orgstructure::WORKER, 3,
                              {{"PT_SURNAME", "Иванов"}, {"PT_NAME", "Иван"}, {"PT_PATRONYMIC", "Петрович"},
                               {"PT_WORKERNUM", "000010"}, {"PT_DATE_BEGIN", "2024-03-05"},
                               {"PT_DOC_TYPE", "Паспорт"}, {"PT_DOC_SERIES", "45 01"}, {"PT_DOC_NUMBER", "123456"}}),
                       object(11, db::orgstructure::WORKER, 4,
                              {{"PT_SURNAME", "Иваненко"}, {"PT_WORKERNUM", "000011"}, {"PT_DATE_BEGIN", "вчера"}}),
                       object(12, db::orgstructure::WORKER, 4, {{"PT_SURNAME", "Петров"}})});
    store->setObjects(POLICY_DATANAME,
                      {object(20, db::access::POLICY, 0, {{"PT_NAME", "Центральная проходная"}}),
                       object(21, db::access::POLICY, 0, {{"PT_NAME", "Склад"}}),
                       object(22, db::access::POLICY, 0, {{"PT_NAME", "Серверная"}, {"PT_HIDDEN", "true"}}),
                       object(23, db::access::POLICY, 0, {{"PT_NAME", "Щитовая"}, {"PT_HIDDEN", "1"}})});
    store->setObjects(CONFIRM_LIST_DATANAME,
                      {object(30, QStringLiteral("OT_CONFIRM_LIST"), 0, {{"PT_NAME", "Разовый пропуск"}})});
    store->setObjects(PASS_REQUEST_DATANAME,
                      {object(40, db::misc::PASS_REQUEST, 0, {{"PT_PASSID", "П-1"}, {"PT_STATE", "0"}}),
                       object(41, db::misc::PASS_REQUEST, 0, {{"PT_PASSID", "П-2"}, {"PT_STATE", "1"}})});
}

template <typename T>
T* child(const QWidget& page, const char* name)
{
    T* found = page.findChild<T*>(QLatin1String(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

QSet<unsigned int> shownUids(QListView* list)
{
    const auto* proxy = qobject_cast<ObjectTreeProxy*>(list->model());
    QSet<unsigned int> uids;
    for (int row = 0; row < proxy->rowCount(); ++row) {
        const QString name = proxy->index(row, 0).data().toString();
        for (const ObjectInfo& group : *LocalStorage::instance()->constObjects(POLICY_DATANAME)) {
            if (group.parameters.value("PT_NAME") == name)
                uids.insert(group.uid);
        }
    }
    return uids;
}

void selectByName(QListView* list, const QStringList& names)
{
    list->clearSelection();
    for (int row = 0; row < list->model()->rowCount(); ++row) {
        const QModelIndex index = list->model()->index(row, 0);
        if (names.contains(index.data().toString()))
            list->selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

// A borrowed widget as the console's fingerprint plug-in would lend it.
class FingerprintWidget : public QWidget
{
    Q_OBJECT
public:
    explicit FingerprintWidget(QWidget* parent) : QWidget(parent, Qt::Dialog)
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(9, 9, 9, 9);
    }
    QString caller;
    QList<TYPE_ID> users;

    Q_INVOKABLE void setCaller(QString name) { caller = name; }
    Q_INVOKABLE void setUser(vorandel::TYPE_ID uid) { users << uid; }
};

}  // namespace

// The pages of the new request wizard, each on its own: their fields, their completeness and
// what they hand to the wizard.
class TestWizardPages : public QObject
{
    Q_OBJECT

    TestEnvironment environment;

private slots:
    void initTestCase()
    {
        qRegisterMetaType<TYPE_ID>("vorandel::TYPE_ID");
        IconTheme::install();
    }
    void init() { fillStore(); }
    void cleanupTestCase() { LocalStorage::instance()->clear(); }

    // --- parameters ------------------------------------------------------------------------

    void parametersComplete_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<qint64>("seconds");  // from the beginning to the end
        QTest::addColumn<qint64>("beginIn");  // seconds from now to the beginning
        QTest::addColumn<bool>("group");
        QTest::addColumn<bool>("complete");

        QTest::newRow("59 seconds") << "П-3" << qint64(59) << qint64(3600) << true << false;
        QTest::newRow("60 seconds") << "П-3" << qint64(60) << qint64(3600) << true << true;
        QTest::newRow("begun in the past") << "П-3" << qint64(7200) << qint64(-3600) << true << true;
        QTest::newRow("ended") << "П-3" << qint64(3540) << qint64(-3600) << true << false;
        QTest::newRow("no group") << "П-3" << qint64(3600) << qint64(60) << false << false;
        QTest::newRow("no number") << "" << qint64(3600) << qint64(60) << true << false;
        QTest::newRow("number in use") << "П-1" << qint64(3600) << qint64(60) << true << false;
        QTest::newRow("number of a rejected request") << "П-2" << qint64(3600) << qint64(60) << true << false;
        // Seconds are read as 32 bits: a span beyond that comes out negative and is refused.
        QTest::newRow("68 years") << "П-3" << qint64(2147483000) << qint64(60) << true << true;
        QTest::newRow("past 32 bits") << "П-3" << qint64(2147483648LL + 100) << qint64(60) << true << false;
    }

    void parametersComplete()
    {
        QFETCH(QString, number);
        QFETCH(qint64, seconds);
        QFETCH(qint64, beginIn);
        QFETCH(bool, group);
        QFETCH(bool, complete);

        RequestPropertiesWizardPage page;
        QVERIFY(!page.isComplete());  // both dates start at the same moment, and no group is given
        QSignalSpy changed(&page, &QWizardPage::completeChanged);
        auto* passId = child<ParameterizedEdit>(page, "lePassId");
        passId->clear();
        typeText(passId, number);
        const QDateTime begin = QDateTime::currentDateTime().addSecs(beginIn);
        child<VDDateTimeEdit>(page, "dateBegin")->setDateTime(begin);
        child<VDDateTimeEdit>(page, "dateEnd")->setDateTime(begin.addSecs(seconds));
        if (group) {
            selectByName(child<QListView>(page, "listAvailablePolicies"), {"Склад"});
            child<QToolButton>(page, "tbAddPolicy")->click();
        }
        QVERIFY(!changed.isEmpty());
        QCOMPARE(page.isComplete(), complete);
    }

    // Groups move between the two lists and stand on exactly one side; hidden ones are never on
    // offer. The page hands on exactly what was given, the confirm list only once chosen.
    void groupsAndWhatThePageGives()
    {
        RequestPropertiesWizardPage page;
        auto* available = child<QListView>(page, "listAvailablePolicies");
        auto* selected = child<QListView>(page, "listSelectedPolicies");
        QCOMPARE(shownUids(available), (QSet<unsigned int>{20, 21}));
        QVERIFY(shownUids(selected).isEmpty());
        selectByName(available, {"Склад", "Центральная проходная"});
        child<QToolButton>(page, "tbAddPolicy")->click();
        QVERIFY(shownUids(available).isEmpty());
        QCOMPARE(shownUids(selected), (QSet<unsigned int>{20, 21}));
        selectByName(selected, {"Склад"});
        child<QToolButton>(page, "tbRemovePolicy")->click();
        QCOMPARE(shownUids(available), QSet<unsigned int>{21});
        QCOMPARE(shownUids(selected), QSet<unsigned int>{20});

        const QDateTime begin(QDate(2030, 5, 6), QTime(9, 30));
        child<VDDateTimeEdit>(page, "dateBegin")->setDateTime(begin);
        child<VDDateTimeEdit>(page, "dateEnd")->setDateTime(begin.addDays(2));
        child<ParameterizedEdit>(page, "lePassId")->setText("П-3");
        auto* list = child<VDObjectSelector>(page, "cbConfirmList");
        QCOMPARE(list->currentUid(), 0u);  // optional, and nothing is chosen for the operator
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        QHash<QString, QString> properties = page.requestProperties();
        QVERIFY(QDateTime::fromString(properties.take("PT_DATE"), Qt::ISODate) >= before);
        QCOMPARE(properties, (QHash<QString, QString>{{"PT_PASSID", "П-3"},
                                                      {"PT_DATE_BEGIN", "2030-05-06T09:30:00"},
                                                      {"PT_DATE_END", "2030-05-08T09:30:00"},
                                                      {"PT_STATE", "0"},
                                                      {"PT_WAY", "20"}}));
        list->setCurrentUid(30);
        QCOMPARE(page.requestProperties().value("PT_CONFIRM_LIST"), QStringLiteral("30"));
        list->clearSelection();
        QVERIFY(!page.requestProperties().contains("PT_CONFIRM_LIST"));
    }

    // --- the visitor -----------------------------------------------------------------------

    // A visitor needs a surname and a department.
    void visitorComplete()
    {
        RequestWorkerWizardPage page;
        auto* surname = child<PromptMenuEdit>(page, "leSurname");
        typeText(surname, "Сидоров");
        QVERIFY(!page.isComplete());  // no department yet
        child<VDObjectSelector>(page, "cbDepartment")->setCurrentUid(3);
        QVERIFY(page.isComplete());
        QCOMPARE(page.parentUid(), 3u);
        surname->clear();
        QVERIFY(!page.isComplete());
    }

    // Three letters of a surname find the worker; choosing him fills the page from his record.
    // How a hit is chosen in the menu is the field's own suite.
    void pickingAWorker()
    {
        RequestWorkerWizardPage page;
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        auto* surname = child<PromptMenuEdit>(page, "leSurname");
        child<QLineEdit>(page, "leCarNumber")->setText("А123ВС 77");
        child<QLineEdit>(page, "leFromOrg")->setText("ООО «Ромашка»");
        surname->setFocus();
        typeText(surname, "Ива");
        QList<unsigned int> hits = surname->hits();
        std::sort(hits.begin(), hits.end());
        QCOMPARE(hits, (QList<unsigned int>{10, 11}));
        emit surname->found(10);

        QCOMPARE(page.subjectUid(), 10u);
        QCOMPARE(surname->text(), QStringLiteral("Иванов"));
        QCOMPARE(child<QLineEdit>(page, "leName")->text(), QStringLiteral("Иван"));
        QCOMPARE(child<QLineEdit>(page, "leWorkernum")->text(), QStringLiteral("000010"));
        QCOMPARE(child<QLineEdit>(page, "leDocSeries")->text(), QStringLiteral("45 01"));
        QVERIFY(child<QLineEdit>(page, "leCarNumber")->text().isEmpty());
        QCOMPARE(child<QLineEdit>(page, "leFromOrg")->text(), QStringLiteral("ООО «Ромашка»"));
        QCOMPARE(page.parentUid(), 3u);
        QVERIFY(!child<VDObjectSelector>(page, "cbDepartment")->isEnabled());
        QVERIFY(child<QLabel>(page, "lbNewWorker")->isHidden());
        QVERIFY(page.isComplete());
        // The field shows the day he was taken on, and that counts as a birthday given.
        QCOMPARE(child<VDDateEdit>(page, "deBirthday")->date(), QDate(2024, 3, 5));
        QCOMPARE(page.subjectProperties().value("PT_BIRTHDAY"), QStringLiteral("2024-03-05"));

        // By the personnel number, and picking again marks nothing as edited.
        auto* number = child<PromptMenuEdit>(page, "leWorkernum");
        number->clear();
        number->setFocus();
        typeText(number, "00001");
        QVERIFY(number->hits().contains(11));
        emit number->found(11);
        QCOMPARE(page.subjectUid(), 11u);
        QVERIFY(page.validatePage());
        QCOMPARE(page.subjectUid(), 11u);
        // A start date that doesn't parse leaves the field at its placeholder, which doesn't count.
        QCOMPARE(child<VDDateEdit>(page, "deBirthday")->date(), QDate(2000, 1, 1));
        QVERIFY(!page.subjectProperties().contains("PT_BIRTHDAY"));
        child<VDDateEdit>(page, "deBirthday")->setDate(QDate(1990, 7, 1));
        QCOMPARE(page.subjectProperties().value("PT_BIRTHDAY"), QStringLiteral("1990-07-01"));
    }

    // One changed letter of a picked worker's name stands for a new person, in his department;
    // typing the letter back doesn't bring the pick back.
    void editingAPickedWorker_data()
    {
        QTest::addColumn<QString>("field");
        QTest::newRow("number") << "leWorkernum";
        QTest::newRow("surname") << "leSurname";
        QTest::newRow("name") << "leName";
        QTest::newRow("patronymic") << "lePatronymic";
    }

    void editingAPickedWorker()
    {
        QFETCH(QString, field);
        RequestWorkerWizardPage page;
        emit child<PromptMenuEdit>(page, "leSurname")->found(10);
        QCOMPARE(page.subjectUid(), 10u);

        auto* edit = page.findChild<QLineEdit*>(field);
        edit->setCursorPosition(edit->text().size());
        QTest::keyClick(edit, Qt::Key_X);
        QCOMPARE(page.subjectUid(), 0u);
        QVERIFY(!child<QLabel>(page, "lbNewWorker")->isHidden());
        QVERIFY(!child<VDObjectSelector>(page, "cbDepartment")->isEnabled());
        QCOMPARE(page.parentUid(), 3u);
        QTest::keyClick(edit, Qt::Key_Backspace);
        QCOMPARE(page.subjectUid(), 0u);
        QVERIFY(!child<QLabel>(page, "lbNewWorker")->isHidden());
        // What a new worker is made of: his own document, the day he is taken on.
        const QHash<QString, QString> properties = page.subjectProperties();
        QCOMPARE(properties.value("PT_DOC_NUMBER"), QStringLiteral("123456"));
        QCOMPARE(properties.value("PT_DATE_BEGIN"), QDate::currentDate().toString(Qt::ISODate));

        // Choosing nobody gives the department back to the operator.
        emit child<PromptMenuEdit>(page, "leSurname")->found(0);
        QVERIFY(child<VDObjectSelector>(page, "cbDepartment")->isEnabled());
    }

    void newVisitorProperties()
    {
        RequestWorkerWizardPage page;
        typeText(child<PromptMenuEdit>(page, "leSurname"), "Сидоров");
        typeText(child<QLineEdit>(page, "leName"), "Пётр");
        child<QLineEdit>(page, "leDocType")->setText("Паспорт");
        child<QLineEdit>(page, "leCarBrand")->setText("Ладога");
        child<QPlainTextEdit>(page, "descriptionEdit")->setPlainText("К главному инженеру");
        child<QCheckBox>(page, "cbNeedDismissLinked")->setChecked(true);
        child<VDObjectSelector>(page, "cbDepTo")->setCurrentUid(3);
        QVERIFY(!child<QLabel>(page, "lbNewWorker")->isHidden());

        QHash<QString, QString> worker = page.subjectProperties();
        QCOMPARE(worker.take("PT_DATE_BEGIN"), QDate::currentDate().toString(Qt::ISODate));
        // No number, no patronymic, no photo, no birthday: not even as empty values.
        QCOMPARE(worker, (QHash<QString, QString>{{"PT_SURNAME", "Сидоров"}, {"PT_NAME", "Пётр"},
                                                  {"PT_DOC_TYPE", "Паспорт"}}));
        QCOMPARE(page.requestProperties(),
                 (QHash<QString, QString>{{"PT_SURNAME", "Сидоров"},
                                          {"PT_NAME", "Пётр"},
                                          {"PT_DOC_TYPE", "Паспорт"},
                                          {"PT_CAR_BRAND", "Ладога"},
                                          {"PT_EXTRA_INFO", "К главному инженеру"},
                                          {"PT_DISMISS_LINKED", "true"},
                                          {"PT_TO_DEPARTMENT", "3"}}));
    }

    void photo_data()
    {
        QTest::addColumn<QString>("denied");  // the setting's value; null when missing
        QTest::addColumn<bool>("kept");
        QTest::newRow("no setting") << QString() << true;
        QTest::newRow("denied") << "true" << false;
        QTest::newRow("denied, other case") << "True" << true;
    }

    void photo()
    {
        QFETCH(QString, denied);
        QFETCH(bool, kept);
        QHash<QString, QString> settings;
        if (!denied.isNull())
            settings.insert(db::database::PD_DENY_STORE_USER_PHOTOS, denied);
        fillStore(settings);
        RequestWorkerWizardPage page;
        auto* photo = child<PhotoWidget>(page, "photoWidget");
        QCOMPARE(photo->isEnabled(), kept);
        const QImage notice(kept ? ":/accessctl/no_photo" : ":/accessctl/fz152");
        QVERIFY(!notice.isNull());
        QCOMPARE(photo->pixmap().toImage(), QPixmap(kept ? ":/accessctl/no_photo" : ":/accessctl/fz152").toImage());
        QVERIFY(!page.subjectProperties().contains("PT_PHOTO"));  // the placeholder is no photo

        QImage portrait(120, 160, QImage::Format_RGB32);
        portrait.fill(Qt::darkCyan);
        photo->setPixmap(QPixmap::fromImage(portrait));
        const QHash<QString, QString> properties = page.subjectProperties();
        QCOMPARE(properties.contains("PT_PHOTO"), kept);
        QCOMPARE(properties.contains("PT_PHOTO_PREVIEW"), kept);
        if (kept) {
            QCOMPARE(VDGuiGlobals::imageFromDB(properties.value("PT_PHOTO").toLatin1()).size(), QSize(120, 160));
            QCOMPARE(VDGuiGlobals::imageFromDB(properties.value("PT_PHOTO_PREVIEW").toLatin1()).size(), QSize(48, 64));
        }
    }

    // --- the borrowed fingerprint widget -----------------------------------------------------

    // The page borrows the fingerprint plug-in's window and must hand it back as it found it.
    void borrowedWidgetGoesBack()
    {
        QWidget owner;
        auto* borrowed = new FingerprintWidget(&owner);
        borrowed->move(40, 50);
        {
            RequestBiometricWizardPage page;
            page.setFingerprintWidget(borrowed);
            QCOMPARE(borrowed->parentWidget(), &page);
            QVERIFY(!borrowed->isWindow());
            QCOMPARE(borrowed->caller, QStringLiteral("requestview"));
            page.setSubjectUid(77);
            QCOMPARE(borrowed->users, QList<TYPE_ID>{77});
        }
        QCOMPARE(borrowed->parentWidget(), &owner);
        QCOMPARE(borrowed->windowFlags() & Qt::WindowType_Mask, Qt::Dialog);
        QCOMPARE(borrowed->layout()->contentsMargins(), QMargins(9, 9, 9, 9));
        QCOMPARE(borrowed->pos(), QPoint(40, 50));
        QVERIFY(!borrowed->isVisible());

        // Gone before the page: nothing to give back, and nobody to tell.
        RequestBiometricWizardPage page;
        page.setFingerprintWidget(borrowed);
        delete borrowed;
        page.setSubjectUid(78);
    }
};

QTEST_MAIN(TestWizardPages)
#include "tst_wizardpages.moc"
