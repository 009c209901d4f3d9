#include "constants.h"
#include "localstorage.h"
#include "records.h"
#include "requestpropertiesview.h"
#include "testenvironment.h"
#include "vddatetimeedit.h"
#include "vdobjectselector.h"

#include <QPushButton>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTextEdit>
#include <QtTest>

using namespace vorandel;

namespace {

using Parameters = QHash<QString, QString>;

const QString Begin = QStringLiteral("2026-11-02T09:30:00");
const QString End = QStringLiteral("2026-11-20T18:00:00");

// A request as the store keeps it: every key the editor compares, in the standard forms.
Parameters stored()
{
    return {{"PT_STATE", "0"},
            {"PT_SURNAME", "Лебедева"},
            {"PT_NAME", "Анна"},
            {"PT_PATRONYMIC", "Сергеевна"},
            {"PT_DATE_BEGIN", Begin},
            {"PT_DATE_END", End},
            {"PT_DOC_TYPE", "Паспорт"},
            {"PT_DOC_SERIES", "4510"},
            {"PT_DOC_NUMBER", "123456"},
            {"PT_CAR_BRAND", "Лада"},
            {"PT_CAR_TYPE", "Легковой"},
            {"PT_CAR_NUMBER", "А123ВС77"},
            {"PT_EXTRA_INFO", "Встречает охрана"},
            {"PT_FROM_ORGANIZATION", "ООО «Вектор»"},
            {"PT_TO_DEPARTMENT", "11"}};
}

ObjectInfo unit(TYPE_ID uid, const QString& type, const QString& name, TYPE_ID parent = 0)
{
    return records::object(uid, type, {{QStringLiteral("PT_NAME"), name}}, parent);
}

ObjectInfo worker(TYPE_ID uid, const QString& surname, const QString& number, bool dismissed = false)
{
    ObjectInfo info = unit(uid, db::orgstructure::WORKER, QStringLiteral("Иван"), 11);
    info.parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    info.parameters.insert(QStringLiteral("PT_WORKERNUM"), number);
    if (dismissed)
        info.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("D"));
    return info;
}

// Answers the question box that the next step opens.
void answerNextQuestion(QMessageBox::StandardButton answer, QString* text = nullptr)
{
    QTimer::singleShot(0, [answer, text] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            if (text)
                *text = box->text();
            box->button(answer)->click();
        }
    });
}

}  // namespace

// The request tab: what the operator may change, and that only what really changed goes on.
class TestRequestPropertiesView : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    std::unique_ptr<RequestPropertiesView> view;

    template <typename T>
    T* field(const char* name) const
    {
        return view->findChild<T*>(QLatin1String(name));
    }
    VDDateTimeEdit* begin() const { return field<VDDateTimeEdit>("dtBegin"); }
    VDDateTimeEdit* end() const { return field<VDDateTimeEdit>("dtEnd"); }
    static QDateTime at(const QString& text) { return QDateTime::fromString(text, Qt::ISODate); }

private slots:
    void initTestCase()
    {
        LocalStorage* store = LocalStorage::instance();
        store->clear();
        store->setObjects(ORGSTRUCTURE_DATANAME,
                          {unit(1, db::orgstructure::SUBJECT_ROOT, "Организация"),
                           unit(11, db::orgstructure::DEPARTMENT, "Бухгалтерия", 1),
                           unit(12, db::orgstructure::DEPARTMENT, "Склад", 1)});
        store->setObjects(SUBJECT_DATANAME, {worker(21, "Орлов", "000021"), worker(22, "Котов", "000777"),
                                             worker(23, "Зуев", "000777", true), worker(24, "Рыбин", "")});
    }

    void init()
    {
        view = std::make_unique<RequestPropertiesView>();
        view->setUid(501);
        view->setParameters(stored());
    }

    void cleanupTestCase() { LocalStorage::instance()->clear(); }

    // The form as it was settled: the convoy group hidden and no button to create or pick a worker.
    void formKeepsItsShape()
    {
        QVERIFY(field<QGroupBox>("groupBoxConvoy")->isHidden());
        QVERIFY(view->findChildren<QPushButton*>().isEmpty());
        QCOMPARE(field<QLabel>("leName")->text(), QStringLiteral("Лебедева Анна Сергеевна"));
        QCOMPARE(view->widgetUid(), QStringLiteral("RequestPropertiesView"));
    }

    void onlyRealChangesGoOn_data()
    {
        QTest::addColumn<Parameters>("storedChanges");   // applied to the store's copy before filling
        QTest::addColumn<QString>("edit");               // what the operator does
        QTest::addColumn<Parameters>("expected");

        QTest::newRow("nothing") << Parameters() << QString() << Parameters();
        QTest::newRow("car number") << Parameters() << "leCarNumber=В777ОР99" << Parameters{{"PT_CAR_NUMBER", "В777ОР99"}};
        QTest::newRow("changed and changed back") << Parameters() << "leCarNumber=А123ВС77" << Parameters();
        QTest::newRow("text cleared") << Parameters() << "leDocSeries=" << Parameters{{"PT_DOC_SERIES", ""}};
        QTest::newRow("organisation") << Parameters() << "leOrgFrom=АО «Сириус»"
                                      << Parameters{{"PT_FROM_ORGANIZATION", "АО «Сириус»"}};
        QTest::newRow("remarks") << Parameters() << "teAdditions=Без сопровождения"
                                 << Parameters{{"PT_EXTRA_INFO", "Без сопровождения"}};
        QTest::newRow("department") << Parameters() << "cbDepTo=12" << Parameters{{"PT_TO_DEPARTMENT", "12"}};
        // The same moment in another text counts, as the stored text is the yardstick.
        QTest::newRow("date with milliseconds") << Parameters{{"PT_DATE_BEGIN", "2026-11-02T09:30:00.000"}} << QString()
                                                << Parameters{{"PT_DATE_BEGIN", Begin}};
        QTest::newRow("no department key") << Parameters{{"PT_TO_DEPARTMENT", QString()}} << QString()
                                           << Parameters{{"PT_TO_DEPARTMENT", "0"}};
        QTest::newRow("key never stored") << Parameters{{"PT_CAR_TYPE", QString()}} << QString()
                                          << Parameters();
    }

    void onlyRealChangesGoOn()
    {
        QFETCH(Parameters, storedChanges);
        QFETCH(QString, edit);
        QFETCH(Parameters, expected);

        Parameters request = stored();
        for (auto it = storedChanges.cbegin(); it != storedChanges.cend(); ++it) {
            if (it.value().isEmpty())
                request.remove(it.key());
            else
                request.insert(it.key(), it.value());
        }
        RequestPropertiesView fresh;
        view.reset();
        fresh.setUid(501);
        // The selector keeps its choice when a request has no department: start from none.
        fresh.setParameters(request);
        if (!edit.isEmpty()) {
            const QString name = edit.section(QLatin1Char('='), 0, 0);
            const QString value = edit.section(QLatin1Char('='), 1);
            if (auto* line = fresh.findChild<QLineEdit*>(name))
                line->setText(value);
            else if (auto* text = fresh.findChild<QTextEdit*>(name))
                text->setPlainText(value);
            else
                fresh.findChild<VDObjectSelector*>(name)->setCurrentUid(value.toUInt());
        }
        QCOMPARE(fresh.changedParameters(), expected);

        QSignalSpy saving(&fresh, &RequestPropertiesView::saveRequest);
        fresh.applyChanges();
        QCOMPARE(saving.count(), 1);
        QCOMPARE(saving.first().at(0).value<TYPE_ID>(), TYPE_ID(501));
        QCOMPARE(saving.first().at(1).toString(), db::misc::PASS_REQUEST);
        QCOMPARE(saving.first().at(3).value<Parameters>(), expected);
    }

    // A save makes the form the new yardstick; a failed one (uid 0) leaves the edits to be sent again.
    void savedMovesTheYardstick()
    {
        field<QLineEdit>("leCarBrand")->setText(QStringLiteral("Газель"));
        QVERIFY(QMetaObject::invokeMethod(view.get(), "saved", Q_ARG(unsigned int, 0)));
        QCOMPARE(view->changedParameters(), (Parameters{{"PT_CAR_BRAND", "Газель"}}));
        QVERIFY(QMetaObject::invokeMethod(view.get(), "saved", Q_ARG(unsigned int, 501)));
        QCOMPARE(view->changedParameters(), Parameters());
    }

    void datesAreTied_data()
    {
        QTest::addColumn<int>("beginShift");  // seconds from the stored beginning
        QTest::addColumn<QString>("expectedEnd");

        const QDateTime end = at(End);
        const int toEnd = int(at(Begin).secsTo(end));
        QTest::newRow("a minute before the end") << toEnd - 60 << End;
        QTest::newRow("at the end") << toEnd << end.addSecs(60).toString(Qt::ISODate);
        QTest::newRow("past the end") << toEnd + 3600 << end.addSecs(3660).toString(Qt::ISODate);
        QTest::newRow("earlier") << -86400 << End;
    }

    void datesAreTied()
    {
        QFETCH(int, beginShift);
        QFETCH(QString, expectedEnd);

        QSignalSpy edited(view.get(), &PropertyBaseWidget::dataEdited);
        begin()->setDateTime(at(Begin).addSecs(beginShift));
        QCOMPARE(end()->dateTime().toString(Qt::ISODate), expectedEnd);
        QVERIFY(edited.count() >= 1);
        // Whatever is typed, the request lasts at least a minute.
        end()->setDateTime(begin()->dateTime().addDays(-1));
        QCOMPARE(end()->dateTime(), begin()->dateTime().addSecs(60));
    }

    void readOnlyDisablesEveryField()
    {
        view->setReadOnly(true);
        for (const QWidget* child : view->findChildren<QWidget*>())
            QVERIFY2(!child->isEnabled(), qPrintable(child->objectName()));
        view->setReadOnly(false);
        QVERIFY(field<QLineEdit>("leCarNumber")->isEnabled());
        QVERIFY(begin()->isEnabled());
    }

    // A request that has no worker yet asks for the prints of everybody with its personnel number,
    // the dismissed among them.
    void namesakesOfANewWorker_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QList<TYPE_ID>>("asked");

        QTest::newRow("two holders, one dismissed") << "000777" << QList<TYPE_ID>{22, 23};
        QTest::newRow("empty number matches empty ones") << "" << QList<TYPE_ID>{24};
        QTest::newRow("nobody") << "999999" << QList<TYPE_ID>();
    }

    void namesakesOfANewWorker()
    {
        QFETCH(QString, number);
        QFETCH(QList<TYPE_ID>, asked);

        QSignalSpy asking(view.get(), &RequestPropertiesView::getWorkerFingers);
        Parameters request = stored();
        request.insert(QStringLiteral("PT_PASS_REQUEST_WORKERNUM"), number);
        view->setParameters(request);
        if (asked.isEmpty()) {
            QCOMPARE(asking.count(), 0);
            return;
        }
        QCOMPARE(asking.count(), 1);
        QList<TYPE_ID> uids = asking.first().first().value<QList<TYPE_ID>>();
        std::sort(uids.begin(), uids.end());
        QCOMPARE(uids, asked);

        // With a worker linked nobody is asked about.
        request.insert(QStringLiteral("PT_SUBJECT_ID"), QStringLiteral("21"));
        view->setParameters(request);
        QCOMPARE(asking.count(), 1);
    }


    // Before a worker is made of the request: the dismissed holder of the number doesn't count.
    void aTakenNumberIsAskedAbout()
    {
        Parameters request = stored();
        request.insert(QStringLiteral("PT_PASS_REQUEST_WORKERNUM"), QStringLiteral("000777"));
        view->setParameters(request);
        bool unique = true;
        QString question;
        answerNextQuestion(QMessageBox::No, &question);
        QVERIFY(QMetaObject::invokeMethod(view.get(), "checkWorkerNumUnique", Q_RETURN_ARG(bool, unique)));
        QVERIFY(!unique);
        QCOMPARE(question, QStringLiteral("Обнаружено совпадение табельных номеров:\nКотов Иван\nПродолжить?"));
        answerNextQuestion(QMessageBox::Yes);
        QVERIFY(QMetaObject::invokeMethod(view.get(), "checkWorkerNumUnique", Q_RETURN_ARG(bool, unique)));
        QVERIFY(unique);
    }
};

QTEST_MAIN(TestRequestPropertiesView)
#include "tst_requestpropertiesview.moc"
