#include "seeddata.h"

#include "constants.h"
#include "objectstore.h"
#include "photos.h"
#include "rights.h"

#include <QDateTime>
#include <QPair>
#include <QStringBuilder>
#include <QTime>

namespace vdserver {

using vorandel::INHERIT_DATA;
using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

const QString SeedData::AdministratorLogin = QStringLiteral("admin");

const QVector<SeedData::DemoUser>& SeedData::demoUsers()
{
    using R = Rights;
    static const QVector<DemoUser> users = {
        {AdministratorLogin, "Смирнов", "Алексей", "Викторович",
         {R::Show, R::ShowAll, R::Create, R::Update, R::Delete, R::Confirm}},
        {"petrov", "Петров", "Игорь", "Сергеевич", {R::Show, R::Confirm}},
        {"sidorova", "Сидорова", "Анна", "Павловна", {R::Show, R::Confirm}},
        {"kozlov", "Козлов", "Дмитрий", "Олегович", {R::Show, R::Confirm}},
        {"operator", "Волкова", "Елена", "Николаевна", {R::Show, R::ShowAll, R::Create, R::Update, R::Delete}},
        {"viewer", "Морозов", "Павел", "Андреевич", {R::Show}},
    };
    return users;
}

QString SeedData::DemoUser::displayName() const
{
    return QStringList{surname, name, patronymic}.join(QLatin1Char(' '));
}

QString SeedData::demoPassword(const QString& login)
{
    return QStringLiteral("demo-") + login;
}

const QHash<QString, QByteArray>& SeedData::demoPasswordHashes()
{
    // Made once with PasswordHash::make and kept here: the demo passwords are public anyway, and
    // hashing them at every seeding would cost the console a second of processor time and leave
    // the memory of the hashing threads behind for the table to grow into.
    static const QHash<QString, QByteArray> hashes = {
        {QStringLiteral("admin"), QByteArrayLiteral("$argon2id$v=19$m=65536,t=2,p=1$zY4BmidinoqtvU/1hoLOpQ$lHegGtaBnM68b1iIQGigbWjNhMdRmmwsLnpSi/DRfSA")},
        {QStringLiteral("petrov"), QByteArrayLiteral("$argon2id$v=19$m=65536,t=2,p=1$euhBIWW4vSh2j9OjLwxzrw$Q9N2prk795pnPT6hGkX8rwPOOX5glKWjoFp06gD0Ta0")},
        {QStringLiteral("sidorova"), QByteArrayLiteral("$argon2id$v=19$m=65536,t=2,p=1$y8DTDEDQJf9fZ9MVSN7E9w$20u4I8T6krDq9SPHbucV5FOK/P4WBp3nITOra5uoIPA")},
        {QStringLiteral("kozlov"), QByteArrayLiteral("$argon2id$v=19$m=65536,t=2,p=1$YcpHEHd6j0aLBtVkod+fEQ$VtfqI399IkzbxB4oR5VRoe40kOdg/NnvwRim48F3WaA")},
        {QStringLiteral("operator"), QByteArrayLiteral("$argon2id$v=19$m=65536,t=2,p=1$yTnr0eCAleXAojqMSNhafQ$u9Sy6PGrcZy9jiFYkVKXgCzfTTrVFHzTR1oTPKjL6Hs")},
        {QStringLiteral("viewer"), QByteArrayLiteral("$argon2id$v=19$m=65536,t=2,p=1$6hYcXznquxzZYrSK1aNJ0Q$aZ6eOE0VbIeNbc0Qz2f3eBY9+pXjNeRZeCv7dbkZ/P8")},
    };
    return hashes;
}

namespace {
const QString Name = QStringLiteral("PT_NAME");
const QString Surname = QStringLiteral("PT_SURNAME");
const QString Patronymic = QStringLiteral("PT_PATRONYMIC");

const QVector<QString> MaleNames = {
    "Александр", "Алексей", "Андрей",  "Антон",     "Артём",  "Борис",   "Вадим",   "Василий",
    "Виктор",    "Владимир", "Григорий", "Денис",    "Дмитрий", "Евгений", "Егор",    "Иван",
    "Игорь",     "Илья",     "Кирилл",  "Константин", "Максим", "Михаил",  "Никита",  "Николай",
    "Олег",      "Павел",    "Пётр",    "Роман",     "Сергей", "Степан",  "Тимофей", "Юрий"};
const QVector<QString> FemaleNames = {
    "Алина",   "Анастасия", "Анна",  "Валентина", "Вера",    "Виктория", "Галина",   "Дарья",
    "Екатерина", "Елена",   "Ирина", "Ксения",    "Лариса",  "Людмила",  "Маргарита", "Марина",
    "Мария",   "Надежда",   "Наталья", "Нина",    "Оксана",  "Ольга",    "Полина",   "Светлана",
    "Софья",   "Татьяна",   "Юлия"};
const QVector<QPair<QString, QString>> Patronymics = {
    {"Александрович", "Александровна"}, {"Алексеевич", "Алексеевна"}, {"Андреевич", "Андреевна"},
    {"Борисович", "Борисовна"},         {"Васильевич", "Васильевна"}, {"Викторович", "Викторовна"},
    {"Владимирович", "Владимировна"},   {"Дмитриевич", "Дмитриевна"}, {"Евгеньевич", "Евгеньевна"},
    {"Иванович", "Ивановна"},           {"Игоревич", "Игоревна"},     {"Михайлович", "Михайловна"},
    {"Николаевич", "Николаевна"},       {"Олегович", "Олеговна"},     {"Павлович", "Павловна"},
    {"Петрович", "Петровна"},           {"Романович", "Романовна"},   {"Сергеевич", "Сергеевна"},
    {"Юрьевич", "Юрьевна"}};
const QVector<QString> MaleSurnames = {
    "Иванов",   "Смирнов",  "Кузнецов", "Попов",    "Васильев", "Соколов",  "Михайлов", "Новиков",
    "Фёдоров",  "Морозов",  "Волков",   "Алексеев", "Лебедев",  "Семёнов",  "Егоров",   "Павлов",
    "Степанов", "Николаев", "Орлов",    "Андреев",  "Макаров",  "Никитин",  "Захаров",  "Зайцев",
    "Соловьёв", "Борисов",  "Яковлев",  "Григорьев", "Романов", "Воробьёв", "Сергеев",  "Кузьмин",
    "Фролов",   "Дмитриев", "Королёв",  "Гусев",    "Киселёв",  "Ильин",    "Максимов", "Поляков",
    "Сорокин",  "Виноградов", "Белов",  "Медведев", "Антонов",  "Тарасов",  "Жуков",    "Баранов",
    "Комаров",  "Давыдов",  "Беляев",   "Богданов", "Осипов",   "Матвеев",  "Титов",    "Марков",
    "Крылов",   "Куликов",  "Карпов",   "Мельников", "Денисов", "Тихонов",  "Фомин",    "Чернов",
    "Ковальский", "Вишневский", "Островский", "Руденко", "Бондаренко", "Кравец"};
const QVector<QString> Organisations = {
    "ООО «Техносервис»",      "АО «Северный подряд»",  "ООО «Балтийская логистика»",
    "ИП Кузнецов А. В.",      "ООО «СтройМонтаж»",     "ООО «ИнфоСистемы»",
    "АО «Энергоучёт»",        "ООО «Чистый город»",    "ООО «Альфа-Климат»",
    "ГБУ «Городская поликлиника №3»", "Частное лицо"};
const QVector<QString> Comments = {
    "Сопровождает сотрудник службы безопасности",
    "Проход только в рабочее время",
    "Привезёт оборудование для лаборатории.\nРазгрузка у склада готовой продукции",
    "Участник совещания в конференц-зале",
    "Пропуск по просьбе главного инженера",
    "Проверить наличие средств защиты на проходной",
    "Стажировка в ИТ-отделе",
    "Собеседование в отделе кадров"};
const QVector<QString> Documents = {"Паспорт гражданина РФ", "Паспорт гражданина РФ", "Паспорт гражданина РФ",
                                    "Водительское удостоверение", "Заграничный паспорт"};
const QVector<QString> CarTypes = {"Легковой", "Легковой", "Грузовой", "Микроавтобус"};
const QVector<QString> CarMakes = {"Ладога", "Вектор", "Кедр", "Буран", "Север"};
const QVector<QString> Regions = {"77", "97", "177", "50", "190", "78", "47"};
const QString PlateLetters = QStringLiteral("АВЕКМНОРСТУХ");

// The list of vehicles' entry; requests on it come with a car.
constexpr int CarList = 2;

const QVector<QString>& femaleSurnames()
{
    static const QVector<QString> surnames = [] {
        QVector<QString> feminine;
        for (const QString& surname : MaleSurnames) {
            if (surname.endsWith(QStringLiteral("ий")))
                feminine.append(surname.chopped(2) + QStringLiteral("ая"));
            else if (surname.endsWith(QStringLiteral("ов")) || surname.endsWith(QStringLiteral("ев"))
                     || surname.endsWith(QStringLiteral("ёв")) || surname.endsWith(QStringLiteral("ин")))
                feminine.append(surname + QStringLiteral("а"));
            else
                feminine.append(surname);
        }
        return feminine;
    }();
    return surnames;
}

TYPE_ID accountUid(const QList<Account>& accounts, const QString& login)
{
    for (const Account& account : accounts) {
        if (account.login == login)
            return account.uid;
    }
    return 0;
}

// A part of a full-size count: all of it from 10,000 requests on, proportionally less below.
int scaled(int full, int requests, int least)
{
    return qMax(least, int(qint64(full) * qMin(requests, 10000) / 10000));
}

// Shared texts of the numbers below 1000: formatting a number costs more than storing a value.
const QString& small(int value)
{
    static const QVector<QString> numbers = [] {
        QVector<QString> texts;
        for (int number = 0; number < 1000; ++number)
            texts.append(QString::number(number));
        return texts;
    }();
    return numbers.at(value);
}
}  // namespace

SeedData::SeedData(ObjectStore& store, const SeedOptions& options, SeedProgress progress)
    : m_store(store), m_workflow(store), m_options(options), m_random(options.randomSeed),
      m_today(QDate::currentDate()), m_progress(std::move(progress))
{
    for (int i = 0; i < 8; ++i) {
        QByteArray data(96, Qt::Uninitialized);
        m_random.fillRange(reinterpret_cast<quint32*>(data.data()), data.size() / int(sizeof(quint32)));
        m_templateData.append(data);
    }
}

QList<Account> SeedData::populate()
{
    const int requests = qMax(0, m_options.requests);
    m_steps = requests / 2 + requests;
    addOrganisation(scaled(30, requests, 0));
    addJobs();
    addAccessGroups(scaled(100, requests, 8));
    addDepartmentAccess();
    const QList<Account> accounts = addUsers(scaled(200, requests, 12));
    addConfirmLists(accounts);
    addDevices();
    addWorkers(requests / 2);
    addRequests(requests);
    addSettings();
    // A fresh set is published whole, not announced piece by piece.
    m_store.takeChanges();
    return accounts;
}

void SeedData::reportProgress()
{
    ++m_done;
    if (m_progress && (m_done % 1000 == 0 || m_done == m_steps))
        m_progress(m_done, m_steps);
}

void SeedData::addOrganisation(int workshops)
{
    const TYPE_ID root = add(db::orgstructure::SUBJECT_ROOT, 0, {{Name, "Группа компаний «Горизонт»"}});
    const TYPE_ID company = add(db::orgstructure::FIRM, root, {{Name, "АО «Горизонт»"}});
    const TYPE_ID service = add(db::orgstructure::FIRM, root, {{Name, "ООО «Горизонт-Сервис»"}});
    const TYPE_ID outsiders = add(db::orgstructure::FIRM, root, {{Name, "Посетители и подрядчики"}});

    const QVector<QString> departments = {
        "Дирекция",          "Бухгалтерия",       "Отдел кадров",       "Служба безопасности",
        "Отдел снабжения",   "ИТ-отдел",          "Юридический отдел",  "Производственный цех №1",
        "Производственный цех №2", "Лаборатория контроля качества", "Склад готовой продукции"};
    for (const QString& department : departments)
        m_departments.append(add(db::orgstructure::DEPARTMENT, company, {{Name, department}}));
    for (int workshop = 1; workshop <= workshops; ++workshop) {
        m_departments.append(add(db::orgstructure::DEPARTMENT, company,
                                 {{Name, QStringLiteral("Производственный участок №%1").arg(workshop)}}));
    }
    m_departments.append(add(db::orgstructure::DEPARTMENT, service, {{Name, "Сервисная служба"}}));
    m_departments.append(add(db::orgstructure::DEPARTMENT, service, {{Name, "Транспортный участок"}}));

    m_visitors = add(db::orgstructure::DEPARTMENT, outsiders, {{Name, "Посетители"}});
    m_guestDepartments = {m_visitors, add(db::orgstructure::DEPARTMENT, outsiders, {{Name, "Подрядчики"}}),
                          add(db::orgstructure::DEPARTMENT, outsiders, {{Name, "Гости дирекции"}})};
    for (TYPE_ID department : qAsConst(m_departments))
        m_departmentUids.append(QString::number(department));
}

void SeedData::addJobs()
{
    const QVector<QString> jobs = {"Инженер",  "Ведущий инженер", "Бухгалтер", "Менеджер по закупкам",
                                   "Водитель", "Охранник",        "Кладовщик", "Электромонтёр",
                                   "Программист", "Юрист",        "Лаборант",  "Слесарь-ремонтник",
                                   "Экспедитор", "Консультант"};
    for (const QString& job : jobs)
        add(JOB_TYPE, 0, {{Name, job}});
}

void SeedData::addAccessGroups(int count)
{
    // Every seventh group is a service one, hidden from those who hand out access.
    const QVector<QString> names = {
        "Центральная проходная", "Грузовая проходная", "Административный корпус", "Производственный корпус",
        "Склад готовой продукции", "Лаборатория", "Серверная", "Парковка", "Столовая", "Конференц-зал",
        "Бухгалтерия", "Цех №1", "Цех №2", "Архив"};
    for (int i = 0; i < count; ++i) {
        const QString name = i < names.size() ? names.at(i)
                                              : QStringLiteral("Корпус %1, этаж %2").arg(i / 5 + 1).arg(i % 5 + 1);
        const bool hidden = i % 7 == 6;
        QHash<QString, QString> parameters = {{Name, name}};
        if (hidden)
            parameters.insert(QStringLiteral("PT_HIDDEN"), QStringLiteral("true"));
        const TYPE_ID uid = add(db::access::POLICY, 0, parameters);
        if (!hidden)
            m_openGroups.append(QString::number(uid));
    }
}

void SeedData::addDepartmentAccess()
{
    // Links of type 7 from a department to a group: what every worker taken on there gets. The
    // staff pass the main gate and one more place; visitors and contractors their own gate; the
    // guests of the directorate get nothing but what each pass gives.
    const auto give = [this](TYPE_ID department, const QVector<QString>& groups) {
        ObjectInfo unit = *m_store.object(department);
        for (const QString& group : groups)
            unit.inherits.insert(7, INHERIT_DATA(department, group.toUInt(), 7));
        m_store.put(unit);
    };
    const int open = m_openGroups.size();
    if (open < 3)
        return;
    for (int i = 0; i < m_departments.size(); ++i)
        give(m_departments.at(i), {m_openGroups.at(0), m_openGroups.at(2 + i % (open - 2))});
    give(m_guestDepartments.at(0), {m_openGroups.at(0)});
    give(m_guestDepartments.at(1), {m_openGroups.at(1)});
}

QList<Account> SeedData::addUsers(int count)
{
    const QVector<DemoUser>& named = demoUsers();
    QList<Account> accounts;
    for (const DemoUser& user : named) {
        const TYPE_ID uid = add(db::user::USER, 0,
                                {{QStringLiteral("PT_LOGIN"), user.login},
                                 {Surname, user.surname},
                                 {Name, user.name},
                                 {Patronymic, user.patronymic}});
        accounts.append({uid, user.login, user.displayName(), user.roles});
    }
    for (int i = named.size(); i < count; ++i) {
        const Person someone = person(chance(50));
        add(db::user::USER, 0,
            {{QStringLiteral("PT_LOGIN"), QStringLiteral("user%1").arg(i, 3, 10, QLatin1Char('0'))},
             {Surname, someone.surname},
             {Name, someone.name},
             {Patronymic, someone.patronymic}});
    }
    // The pass office raises most requests, the administrator the rest.
    const QString office = QString::number(accountUid(accounts, QStringLiteral("operator")));
    m_creators = {office, office, office, QString::number(accountUid(accounts, AdministratorLogin))};
    return accounts;
}

void SeedData::addConfirmLists(const QList<Account>& accounts)
{
    const QVector<QPair<QString, QStringList>> lists = {
        {"Разовый пропуск посетителя", {"petrov", "sidorova"}},
        {"Пропуск подрядной организации", {"sidorova", "kozlov", "petrov"}},
        {"Въезд автотранспорта", {"kozlov", "petrov"}},
    };
    for (const auto& [name, logins] : lists) {
        ConfirmList list;
        vorandel::INHERIT_MAP links;
        for (int i = 0; i < logins.size(); ++i) {
            list.members.append(INHERIT_DATA(0, accountUid(accounts, logins.at(i)),
                                             vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, unsigned(i + 1) * 10));
            links.insert(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, list.members.last());
        }
        list.uid = QString::number(add(CONFIRM_LIST_TYPE, 0, {{Name, name}}, links));
        m_lists.append(list);
    }
}

void SeedData::addDevices()
{
    const QString kind = QStringLiteral("PT_DEVICE_TYPE");
    const QString address = QStringLiteral("PT_ADDRESS");
    const QString reader = QStringLiteral("card_reader");
    add(DEVICE_TYPE, 0, {{Name, "Считыватель карт бюро пропусков"}, {kind, reader}, {address, "10.0.12.21"}});
    add(DEVICE_TYPE, 0, {{Name, "Считыватель карт КПП №1"}, {kind, reader}, {address, "10.0.12.22"}});
    m_terminal = add(DEVICE_TYPE, 0, {{Name, "Биометрический терминал КПП №1"},
                                      {kind, QStringLiteral("biometric_terminal")},
                                      {address, "10.0.12.30"}});
    add(DEVICE_TYPE, 0, {{Name, "Считыватель карт столовой"}, {kind, reader}, {address, "10.0.12.40"},
                         {QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("d")}});
}

void SeedData::addWorkers(int count)
{
    // Drawing a preview costs about a millisecond: only a small set can afford one for everybody.
    const bool previews = count <= 500;
    m_lastCard = 2000000000ull + m_random.bounded(1000000u);
    m_workers.reserve(count);
    for (int i = 0; i < count; ++i) {
        const Person someone = person(chance(45));
        ObjectInfo record = worker(someone, i + 1);
        if (chance(85)) {
            m_store.promisePortrait(record.uid);
            if (previews)
                record.parameters.insert(PHOTO_PREVIEW_KEY, Photos::preview(record));
        }
        const int cards = pick(100);
        addCards(record, cards < 2 ? 2 : cards < 45 ? 1 : 0);
        if (chance(55))
            addTemplates(record.uid);
        m_store.put(record);
        m_workers.append({QString::number(record.uid), someone});
        reportProgress();
    }
}

ObjectInfo SeedData::worker(const Person& person, int number)
{
    ObjectInfo record;
    record.uid = m_store.newUid();
    record.type = db::orgstructure::WORKER;
    record.parent = chance(70) ? any(m_guestDepartments) : any(m_departments);
    record.parameters = {{Surname, person.surname},
                         {Name, person.name},
                         {Patronymic, person.patronymic},
                         {QStringLiteral("PT_WORKERNUM"), QString::number(number).rightJustified(6, QLatin1Char('0'))}};
    if (chance(6)) {
        record.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("d"));
        record.parameters.insert(QStringLiteral("PT_DISMISS_DATE"),
                                 m_today.addDays(-1 - pick(90)).toString(Qt::ISODate));
    }
    if (chance(5))
        record.parameters.insert(QStringLiteral("PT_CONVOY_TYPE"), small(1 + pick(2)));
    return record;
}

void SeedData::addCards(ObjectInfo& worker, int count)
{
    for (int i = 0; i < count; ++i) {
        m_lastCard += 1 + pick(9973);
        ObjectInfo card;
        card.uid = m_store.newUid();
        card.type = db::misc::CARD;
        card.parameters = {{db::card::NUMBER, QString::number(m_lastCard)},
                           {db::card::OWNER, QString::number(worker.uid)}};
        m_store.put(card);
        worker.inherits.insert(vorandel::INHERIT_CARD, INHERIT_DATA(worker.uid, card.uid, vorandel::INHERIT_CARD));
    }
}

void SeedData::addTemplates(TYPE_ID worker)
{
    QVector<vorandel::TEMPLATE_DATA> templates;
    const auto add = [&](qint16 index, int kind) {
        vorandel::TEMPLATE_DATA data;
        data.id = ++m_lastTemplate;
        data.quality = 60 + pick(40);
        data.device = int(m_terminal);
        data.kind = kind;
        data.data = any(m_templateData);
        data.index = index;
        templates.append(data);
    };
    const int firstFinger = pick(10);
    const int fingers = 2 + pick(3);
    for (int finger = 0; finger < fingers; ++finger)
        add(qint16((firstFinger + finger) % 10), 0);
    if (chance(25))
        add(100, 2);
    if (chance(15))
        add(101, 3);
    if (chance(30))
        add(200, 0);
    m_store.setTemplates(worker, templates);
}

void SeedData::addRequests(int count)
{
    for (int i = 0; i < count; ++i) {
        const Plan planned = plan(i);
        ObjectInfo record = request(i, planned);
        m_workflow.prepareNew(record);
        decide(record, planned);
        m_store.put(record);
        reportProgress();
    }
}

SeedData::Plan SeedData::plan(int index)
{
    // The first requests show every state, and then every turn of every list, so that even a
    // small set has requests waiting for each approver.
    if (index < 6)
        return {index, index % m_lists.size(), 0};
    int turn = index - 6;
    for (int list = 0; list < m_lists.size(); ++list) {
        if (turn < m_lists.at(list).members.size())
            return {vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED, list, turn};
        turn -= m_lists.at(list).members.size();
    }
    const int roll = pick(100);
    const int state = roll < 35 ? 0 : roll < 45 ? 1 : roll < 60 ? 2 : roll < 65 ? 3 : roll < 85 ? 4 : 5;
    const int list = chance(80) ? pick(m_lists.size()) : -1;
    return {state, list, list < 0 ? 0 : pick(m_lists.at(list).members.size())};
}

ObjectInfo SeedData::request(int index, const Plan& plan)
{
    int begin = 0;
    int end = 0;
    switch (plan.state) {
    case vorandel::PASS_REQUEST_STATE_FINISHED:
        begin = -15 - pick(60);
        end = qMin(-1, begin + 1 + pick(10));
        break;
    case vorandel::PASS_REQUEST_STATE_ACTIVE:
        begin = -1 - pick(10);
        end = 1 + pick(30);
        break;
    default:
        begin = -2 + pick(22);
        end = begin + pick(30);
        break;
    }
    const int created = qMin(begin, 0) - 1 - pick(6);

    ObjectInfo record;
    record.uid = m_store.newUid();
    record.type = db::misc::PASS_REQUEST;
    QHash<QString, QString>& parameters = record.parameters;
    parameters.reserve(26);
    const QString createdText = dateText(created, 18 + pick(20));
    parameters.insert(db::pass_request::PASSID, QStringLiteral("П-") % createdText.leftRef(4) % QLatin1Char('-')
                                                    % QString::number(index + 1).rightJustified(6, QLatin1Char('0')));
    parameters.insert(db::pass_request::STATE, small(vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED));
    parameters.insert(db::pass_request::CREATE_DATE, createdText);
    parameters.insert(QStringLiteral("PT_DATE_BEGIN"), dateText(begin, 16 + pick(5)));
    parameters.insert(QStringLiteral("PT_DATE_END"), dateText(end, 34 + pick(7)));
    parameters.insert(db::pass_request::CREATOR, any(m_creators));
    if (!m_workers.isEmpty()) {
        const Worker& visitor = any(m_workers);
        parameters.insert(QStringLiteral("PT_SUBJECT_ID"), visitor.uid);
        parameters.insert(Surname, visitor.person.surname);
        parameters.insert(Name, visitor.person.name);
        parameters.insert(Patronymic, visitor.person.patronymic);
    }
    if (!m_openGroups.isEmpty()) {
        QStringList way;
        for (int groups = 1 + pick(3); groups > 0; --groups) {
            const QString& group = any(m_openGroups);
            if (!way.contains(group))
                way.append(group);
        }
        parameters.insert(QStringLiteral("PT_WAY"), way.join(QLatin1Char(';')));
    }
    parameters.insert(db::database::PASS_TO_DEPARTMENT, any(m_departmentUids));
    if (chance(90))
        parameters.insert(db::database::PASS_FROM_ORGANIZATION, any(Organisations));
    if (plan.list >= 0)
        parameters.insert(db::pass_request::CONFIRM_LIST, m_lists.at(plan.list).uid);
    if (plan.list == CarList || chance(8)) {
        const auto letter = [this] { return PlateLetters.at(pick(PlateLetters.size())); };
        const QChar first = letter();
        const QString& digits = small(100 + pick(900));
        const QChar second = letter();
        const QChar third = letter();
        parameters.insert(QStringLiteral("PT_CAR_TYPE"), any(CarTypes));
        parameters.insert(QStringLiteral("PT_CAR_BRAND"), any(CarMakes));
        parameters.insert(QStringLiteral("PT_CAR_NUMBER"),
                          first % digits % second % third % QLatin1Char(' ') % any(Regions));
    }
    if (chance(60)) {
        parameters.insert(db::pass_request::DOC_TYPE, any(Documents));
        const QString& series = small(10 + pick(90));
        parameters.insert(db::pass_request::DOC_SERIES, series % QLatin1Char(' ') % small(10 + pick(90)));
        parameters.insert(db::pass_request::DOC_NUMBER, QString::number(100000 + pick(900000)));
    }
    if (chance(15))
        parameters.insert(db::pass_request::EXTRA_INFO, any(Comments));
    if (chance(10))
        parameters.insert(db::pass_request::DISMISS_LINKED, QStringLiteral("true"));
    return record;
}

void SeedData::decide(ObjectInfo& request, const Plan& plan) const
{
    request.parameters.insert(db::pass_request::STATE, small(plan.state));
    if (plan.list < 0)
        return;
    // The chain is walked as its members would have walked it, in the order of their priorities.
    const QVector<INHERIT_DATA>& members = m_lists.at(plan.list).members;
    const int confirmed = plan.state >= vorandel::PASS_REQUEST_STATE_CONFIRMED
        ? members.size()
        : qMin(plan.confirmed, members.size() - 1);
    const auto record = [&](const INHERIT_DATA& member, unsigned int type) {
        request.inherits.insert(type, INHERIT_DATA(request.uid, member.second, type, member.priority));
    };
    for (int i = 0; i < confirmed; ++i)
        record(members.at(i), vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    if (plan.state == vorandel::PASS_REQUEST_STATE_REJECTED)
        record(members.at(confirmed), vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST);
}

void SeedData::addSettings()
{
    m_store.setSetting(db::database::PASS_REQUEST_SEQUENCE, QStringLiteral("П-${year}-${zero6-num}"));
    m_store.setSetting(db::database::DEFAULT_DEPARTMENT, QString::number(m_visitors));
    m_store.setSetting(db::database::PD_DENY_STORE_USER_PHOTOS, QStringLiteral("false"));
    VDHash<int, vorandel::SCHEDULE_DATA> schedules;
    const QVector<QPair<QString, QString>> weeks = {
        {"Круглосуточно", "1-7 00:00-24:00"},
        {"Рабочие дни", "1-5 08:00-18:00"},
        {"Рабочие дни, продлённый", "1-5 07:00-21:00"},
        {"Выходные дни", "6-7 09:00-17:00"},
    };
    for (int id = 1; id <= weeks.size(); ++id)
        schedules.insert(id, {id, weeks.at(id - 1).first, weeks.at(id - 1).second});
    m_store.setSchedules(schedules);
}

TYPE_ID SeedData::add(const QString& type, TYPE_ID parent, const QHash<QString, QString>& parameters,
                      const vorandel::INHERIT_MAP& inherits)
{
    ObjectInfo object;
    object.uid = m_store.newUid();
    object.type = type;
    object.parent = parent;
    object.parameters = parameters;
    object.inherits = inherits;
    for (INHERIT_DATA& link : object.inherits)
        link.first = object.uid;
    m_store.put(object);
    return object.uid;
}

SeedData::Person SeedData::person(bool female)
{
    const QPair<QString, QString>& patronymic = any(Patronymics);
    if (female)
        return {any(femaleSurnames()), any(FemaleNames), patronymic.second};
    return {any(MaleSurnames), any(MaleNames), patronymic.first};
}

QString SeedData::dateText(int day, int halfHour)
{
    QString& text = m_dates[day * 48 + halfHour];
    if (text.isNull())
        text = QDateTime(m_today.addDays(day), QTime(halfHour / 2, halfHour % 2 * 30)).toString(Qt::ISODate);
    return text;
}

}  // namespace vdserver
