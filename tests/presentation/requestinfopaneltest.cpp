#include "requestinfopaneltest.h"

#include "constants.h"
#include "localstorage.h"
#include "objecttreeproxy.h"
#include "requestinfopanel.h"
#include "requestmodel.h"
#include "requestrecords.h"
#include "vdguiglobals.h"

#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>

using vorandel::ObjectInfo;

namespace {

// The request shown, behind a proxy that puts another request before it in the source, so that
// the card has to read its row through the index it is given.
struct Card
{
    explicit Card(const ObjectInfo& request)
    {
        const ObjectInfo other = records::request(
            request.uid + 1, {{db::pass_request::STATE, "4"}, {QStringLiteral("PT_DATE_BEGIN"), "2020-01-01T00:00:00"}});
        model.add(other);
        model.add(request);
        records::publish(vorandel::PASS_REQUEST_DATANAME, {other, request});
        proxy.setSourceModel(&model);
        proxy.sort(RequestModel::UidColumn, Qt::AscendingOrder);
    }

    QModelIndex row() const { return proxy.index(0, RequestModel::NameColumn); }
    QTextDocument* document() const { return panel.findChild<QTextBrowser*>(QStringLiteral("textBrowser"))->document(); }

    // The card's non-empty lines, with pictures as "[icon:name/size]" or, for photos and
    // labels, "[image]", and non-breaking spaces as blanks.
    QStringList lines() const
    {
        QStringList result;
        for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
            QString line;
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextFragment fragment = it.fragment();
                if (!fragment.charFormat().isImageFormat()) {
                    line += fragment.text();
                    continue;
                }
                const QString name = fragment.charFormat().toImageFormat().name();
                const QString picture = name.startsWith(QLatin1String("icon:")) ? QLatin1Char('[') + name + QLatin1Char(']')
                                                                               : QStringLiteral("[image]");
                line += picture.repeated(fragment.length());
            }
            line.replace(QChar::Nbsp, QLatin1Char(' '));
            if (!line.isEmpty())
                result.append(line);
        }
        return result;
    }

    RequestModel model{nullptr};
    ObjectTreeProxy proxy;
    RequestInfoPanel panel;
};

QString shortDate(const char* iso)
{
    return QDateTime::fromString(QLatin1String(iso), Qt::ISODate).toString(Qt::DefaultLocaleShortDate);
}

}  // namespace

void RequestInfoPanelTest::init()
{
    vorandel::LocalStorage::instance()->clear();
    records::publish(vorandel::USER_DATANAME,
                     {records::user(11, "ivanov", "Иванов", "Иван", "Иванович"), records::user(12, "petrov"),
                      records::user(13, "sidorov", "Сидоров")});
    records::publish(vorandel::POLICY_DATANAME, {records::policy(1, "Въезд"), records::policy(2, "Офис")});
}

void RequestInfoPanelTest::card_data()
{
    QTest::addColumn<ObjectInfo>("request");
    QTest::addColumn<QStringList>("lines");

    const auto stateName = [](vorandel::PassRequestState state) { return VDGuiGlobals::passRequestStateName(state); };

    // A decision without a chain: no section of approvers at all.
    ObjectInfo sparse = records::request(1);
    records::link(sparse, 11, vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    QTest::newRow("nothing known, no chain")
        << sparse
        << QStringList{"[image]",
                       "Дата начала действия", "Дата окончания действия",
                       "Статус", "[icon:common-pause1/24] " + stateName(vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED),
                       "Группы доступа",
                       "Автомобиль", "Вид: <Не задан>", "Марка: <Не задана>", "Номер: <Не задан>",
                       "Документ", "Вид: <Не задан>", "Серия: <Не задана>", "Номер: <Не задан>",
                       "Создал", "[icon:object-OT_USER/16] <Неизвестен>",
                       "Комментарий", "<Не задан>"};

    ObjectInfo full = records::request(1, {{QStringLiteral("PT_SURNAME"), "Смирнов"},
                                           {QStringLiteral("PT_NAME"), "Алексей"},
                                           {db::pass_request::STATE, "2"},
                                           {QStringLiteral("PT_DATE_BEGIN"), "2023-03-01T08:00:00"},
                                           {QStringLiteral("PT_DATE_END"), "2023-03-31T20:30:00"},
                                           {QStringLiteral("PT_WAY"), "2;1;"},
                                           {QStringLiteral("PT_CAR_TYPE"), "легковой"},
                                           {QStringLiteral("PT_CAR_BRAND"), "Лада"},
                                           {QStringLiteral("PT_CAR_NUMBER"), "А123ВС"},
                                           {db::pass_request::DOC_TYPE, "паспорт"},
                                           {db::pass_request::DOC_SERIES, "4510"},
                                           {db::pass_request::DOC_NUMBER, "123456"},
                                           {db::pass_request::EXTRA_INFO, "Через КПП-2"},
                                           {db::pass_request::CREATOR, "13"}});
    // In the order of turns: 14 (gone), 11, 12, 13.
    records::link(full, 13, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, 3);
    records::link(full, 11, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, 1);
    records::link(full, 14, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, 0);
    records::link(full, 12, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, 2);
    records::link(full, 11, vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST, 1);
    records::link(full, 11, vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST, 1);
    records::link(full, 12, vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST, 2);
    QTest::newRow("everything")
        << full
        << QStringList{"[image]", "Смирнов Алексей",
                       "Дата начала действия", shortDate("2023-03-01T08:00:00"),
                       "Дата окончания действия", shortDate("2023-03-31T20:30:00"),
                       "Статус", "[icon:common-pause/24] " + stateName(vorandel::PASS_REQUEST_STATE_CONFIRMED),
                       "Группы доступа", "[image][image]",
                       "Автомобиль", "Вид: легковой", "Марка: Лада", "Номер: А123ВС",
                       "Документ", "Вид: паспорт", "Серия: 4510", "Номер: 123456",
                       "Создал", "[icon:object-OT_USER/16] sidorov (Сидоров)",
                       "Согласующие", "[icon:common-online/16] ivanov (Иванов Иван Иванович)",
                       "[icon:common-cancel/16] petrov", "[icon:object-OT_USER/16] sidorov (Сидоров)",
                       "Комментарий", "Через КПП-2"};
}

void RequestInfoPanelTest::card()
{
    QFETCH(ObjectInfo, request);
    QFETCH(QStringList, lines);

    Card card(request);
    card.panel.showRequestInfo(card.row());

    QCOMPARE(card.lines(), lines);
}
