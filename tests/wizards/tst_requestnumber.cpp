#include "constants.h"
#include "localstorage.h"
#include "parameterizededit.h"
#include "requestpropertieswizardpage.h"
#include "testenvironment.h"

#include <QDate>
#include <QtTest>

using namespace vorandel;

// The number that the parameters page proposes for a new request, from the administrator's
// template and the numbers already in use.
class TestRequestNumber : public QObject
{
    Q_OBJECT

    TestEnvironment environment;

    // The number that a fresh page proposes; a null template means the setting is missing.
    static QString proposed(const QString& pattern, const QStringList& used)
    {
        LocalStorage* store = LocalStorage::instance();
        store->clear();
        QHash<QString, QString> settings;
        if (!pattern.isNull())
            settings.insert(db::database::PASS_REQUEST_SEQUENCE, pattern);
        store->setDbSettings(settings);
        QList<ObjectInfo> requests;
        for (const QString& number : used) {
            ObjectInfo request;
            request.uid = TYPE_ID(requests.size() + 1);
            request.type = db::misc::PASS_REQUEST;
            request.parameters.insert(db::pass_request::PASSID, number);
            requests << request;
        }
        store->setObjects(PASS_REQUEST_DATANAME, requests);
        const RequestPropertiesWizardPage page;
        return page.findChild<ParameterizedEdit*>(QStringLiteral("lePassId"))->text();
    }

private slots:
    void proposes_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QStringList>("used");
        QTest::addColumn<QString>("expected");

        const QDate today = QDate::currentDate();
        const QString y = QString::number(today.year());
        const QString m = QStringLiteral("%1").arg(today.month(), 2, 10, QLatin1Char('0'));
        const QString d = QStringLiteral("%1").arg(today.day(), 2, 10, QLatin1Char('0'));
        const QString lastYear = QString::number(today.year() - 1);

        QTest::newRow("no setting") << QString() << QStringList{"1", "2"} << "";
        // Only numbers of this year match, and only the value counts, not the text's order.
        QTest::newRow("year and number") << "${year}.${num}" << QStringList{y + ".7", y + ".12", lastYear + ".99"}
                                         << y + ".13";
        QTest::newRow("date after the number") << "${num}/${day}.${month}.${year}"
                                               << QStringList{"5/" + d + "." + m + "." + y, "9/01.01.1999"}
                                               << "6/" + d + "." + m + "." + y;
        // The width is a floor, not a rule: shorter and longer numbers in use count as well.
        QTest::newRow("padding doesn't tie the width")
            << "П-${year}-${zero6-num}" << QStringList{"П-" + y + "-7", "П-" + y + "-1234567"} << "П-" + y + "-1234568";
        QTest::newRow("brackets and dots are fixed text") << "(${num}).[x]*^\\" << QStringList{"(4).[x]*^\\", "4"}
                                                           << "(5).[x]*^\\";
        // Operators of the pattern such as "+" stay operators, and are copied to the result as they are.
        QTest::newRow("plus repeats") << "a+${num}" << QStringList{"a+3", "aaa8"} << "a+9";
        QTest::newRow("misspelt macros vanish") << "R-${Num}-${num}${nope}" << QStringList{"R--3"} << "R--4";
        // The first number macro is scanned; the second is filled with the same number.
        QTest::newRow("two number macros") << "${num}-${zero6-num}" << QStringList{"5-000009", "7-1"}
                                           << "8-000008";
        QTest::newRow("no number macro, in use") << "ПР-${year}" << QStringList{"ПР-" + y} << "ПР-" + y;
        QTest::newRow("64-bit numbers") << "${num}" << QStringList{"18446744073709551614", "3"}
                                        << "18446744073709551615";
        QTest::newRow("too long to be a number") << "${num}" << QStringList{"99999999999999999999", "3"} << "4";
        QTest::newRow("invalid pattern matches nothing") << "a{2,1}${num}" << QStringList{"a{2,1}5", "aa5"}
                                                         << "a{2,1}1";
    }

    void proposes()
    {
        QFETCH(QString, pattern);
        QFETCH(QStringList, used);
        QFETCH(QString, expected);
        QCOMPARE(proposed(pattern, used), expected);
    }

    void cleanupTestCase() { LocalStorage::instance()->clear(); }
};

QTEST_MAIN(TestRequestNumber)
#include "tst_requestnumber.moc"
