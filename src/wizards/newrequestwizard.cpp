#include "newrequestwizard.h"

#include "ui_newrequestwizard.h"

#include "authdata.h"
#include "constants.h"
#include "localstorage.h"
#include "requestprocesswizardpage.h"
#include "requestpropertieswizardpage.h"
#include "requestviewlogging.h"
#include "requestworkerwizardpage.h"
#include "vdglobals.h"

#include <QAbstractButton>

using namespace vorandel;

namespace {

// Links from a department to the access groups that its workers get, as access changes name them.
constexpr unsigned int AccessGroupLink = 7;

const QString CreateObject = QStringLiteral("create_object");
const QString PropertyPrefix = QStringLiteral("property-");

void addProperties(TaskInfo& task, const QHash<QString, QString>& properties)
{
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        task.params.insert(PropertyPrefix + it.key(), it.value());
}

}  // namespace

NewRequestWizard::NewRequestWizard(QWidget* parent)
    : PageListWizard(parent), ui(std::make_unique<Ui_NewRequestWizard>())
{
    ui->setupUi(this);
    setPage(WorkerPage, new RequestWorkerWizardPage(this));
    setPage(ParametersPage, new RequestPropertiesWizardPage(this));
    setPage(ProcessPage, new RequestProcessWizardPage(this));
}

NewRequestWizard::~NewRequestWizard() = default;

RequestWorkerWizardPage* NewRequestWizard::workerPage() const
{
    return qobject_cast<RequestWorkerWizardPage*>(page(WorkerPage));
}

RequestPropertiesWizardPage* NewRequestWizard::parametersPage() const
{
    return qobject_cast<RequestPropertiesWizardPage*>(page(ParametersPage));
}

RequestProcessWizardPage* NewRequestWizard::processPage() const
{
    return qobject_cast<RequestProcessWizardPage*>(page(ProcessPage));
}

void NewRequestWizard::setFingerprintWidget(const QPointer<QWidget>&) {}

void NewRequestWizard::setSubjectToPages(unsigned int) {}

void NewRequestWizard::showButtons(int id)
{
    // No page offers a way to cancel: once the saving has begun, it is carried through.
    if (id == ParametersPage) {
        setButtonLayout({QWizard::Stretch, QWizard::BackButton, QWizard::CommitButton});
    } else {
        setButtonLayout(
            {QWizard::Stretch, QWizard::BackButton, QWizard::NextButton, QWizard::CommitButton, QWizard::FinishButton});
    }
    // Coming to the last page is what starts the saving, and it can be reached only once.
    if (id == ProcessPage)
        saveObjects();
    PageListWizard::showButtons(id);
}

void NewRequestWizard::parametersPageCompleteChanged()
{
    if (QAbstractButton* custom = button(QWizard::CustomButton1))
        custom->setEnabled(parametersPage()->isComplete());
}

void NewRequestWizard::saveObjects()
{
    subjectUid = workerPage()->subjectUid();
    int stages = 5;
    if (subjectUid != 0) {
        const OBJECT_HASH* workers = LocalStorage::instance()->constObjects(SUBJECT_DATANAME);
        stages = workers && workers->contains(subjectUid) ? 2 : 3;
    }
    processPage()->setStageCount(stages);
    processPage()->setCurrentStage(1);
    if (subjectUid != 0)
        saveRequest();
    else
        saveSubject();
}

TaskInfo NewRequestWizard::newTask(const QString& type, const QString& slot)
{
    TaskInfo task;
    task.type = type;
    task.receiver = this;
    task.slot = slot;
    return task;
}

void NewRequestWizard::saveSubject()
{
    subjectCreated = true;
    const unsigned int parent = workerPage()->parentUid();
    const QHash<QString, QString> properties = workerPage()->subjectProperties();
    processPage()->showMessage(tr("Сохранение сотрудника"));

    TaskInfo task = newTask(CreateObject, QStringLiteral("subjectSaved"));
    const QString name = VDGlobals::objectName(db::orgstructure::WORKER, properties);
    task.message = tr("Добавление сотрудника %1").arg(name);
    task.errorMessage = tr("Ошибка добавления сотрудника %1").arg(name);
    task.params.insert(QStringLiteral("object_type"), db::orgstructure::WORKER);
    task.params.insert(QStringLiteral("parent"), parent);
    addProperties(task, properties);
    emit appendTask(task);
}

void NewRequestWizard::subjectSaved(TYPE_ID uid)
{
    subjectUid = uid;
    if (uid == 0) {
        processPage()->showMessage(tr("Ошибка сохранения сотрудника"));
        processPage()->finish(false);
        return;
    }
    workerPage()->setUid(uid);
    processPage()->showMessage(tr("Сотрудник успешно сохранен"));
    processPage()->nextStage();
    removeSubjectAccess();
    if (accessChanges.isEmpty()) {
        processPage()->nextStage();
        saveRequest();
    }
}

void NewRequestWizard::removeSubjectAccess()
{
    if (!subjectCreated)
        return;
    const TYPE_ID parent = workerPage()->parentUid();
    ObjectInfo department;
    if (const OBJECT_HASH* units = LocalStorage::instance()->constObjects(ORGSTRUCTURE_DATANAME))
        department = units->value(parent);
    const INHERIT_MAP& links = department.inherits;
    for (auto link = links.constFind(AccessGroupLink); link != links.cend() && link.key() == AccessGroupLink; ++link) {
        ACCESS_CHANGES change;
        change.subject = subjectUid;
        change.object = link->second;
        change.state = false;
        change.set_child = false;
        accessChanges.append(change);
    }
    for (const ACCESS_CHANGES& change : qAsConst(accessChanges)) {
        qCDebug(rvc) << "CHANGE ACCESS" << change.subject << change.object << (change.state ? "true" : "false");
        TaskInfo task = newTask(QStringLiteral("change_subject_access"), QStringLiteral("accessSaved"));
        task.uid = subjectUid;
        task.message =
            tr("Удаление доступа: группа \"%1\"").arg(VDGlobals::objectName(LocalStorage::instance()->object(change.object)));
        task.errorMessage = tr("Ошибка добавления задания на изменение доступа.");
        task.params.insert(QStringLiteral("subject"), change.subject);
        task.params.insert(QStringLiteral("object"), change.object);
        task.params.insert(QStringLiteral("state"), change.state);
        task.params.insert(QStringLiteral("set_child"), false);
        emit appendTask(task);
    }
}

void NewRequestWizard::accessSaved(TYPE_ID uid)
{
    if (uid == 0) {
        // The worker's message on purpose: for the operator the worker is what failed. The queue
        // has dropped the other changes of this worker by now.
        processPage()->showMessage(tr("Ошибка сохранения сотрудника"));
        processPage()->finish(false);
        return;
    }
    if (!accessChanges.isEmpty())
        accessChanges.removeFirst();
    if (!accessChanges.isEmpty())
        return;
    processPage()->showMessage(tr("Изменение доступа сотрудника произведено успешно"));
    processPage()->nextStage();
    saveRequest();
}

void NewRequestWizard::saveRequest()
{
    QHash<QString, QString> properties = workerPage()->requestProperties();
    properties.unite(parametersPage()->requestProperties());
    properties.insert(QStringLiteral("PT_SUBJECT_ID"), QString::number(workerPage()->subjectUid()));
    properties.insert(db::pass_request::CREATOR, QString::number(AuthData::userId()));
    processPage()->showMessage(tr("Сохранение заявки"));

    TaskInfo task = newTask(CreateObject, QStringLiteral("requestSaved"));
    const QString name = VDGlobals::objectName(db::misc::PASS_REQUEST, properties);
    task.message = tr("Добавление заявки %1").arg(name);
    task.errorMessage = tr("Ошибка добавления заявки %1").arg(name);
    task.params.insert(QStringLiteral("object_type"), db::misc::PASS_REQUEST);
    task.params.insert(QStringLiteral("parent"), 0);
    addProperties(task, properties);
    emit appendTask(task);
}

void NewRequestWizard::requestSaved(TYPE_ID uid)
{
    requestUid = uid;
    if (uid == 0) {
        processPage()->showMessage(tr("Ошибка сохранения заявки"));
        processPage()->finish(false);
        return;
    }
    processPage()->showMessage(tr("Заявка успешно сохранена"));
    const OBJECT_HASH* requests = LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME);
    if (!requests || requests->contains(requestUid)) {
        setSubjectToPages(subjectUid);
        processPage()->finish(true);
        emit selectRequest(requestUid);
        return;
    }
    processPage()->showMessage(tr("Обновление информации о заявке"));
    processPage()->nextStage();
    waitingForStore = connect(LocalStorage::instance(), &LocalStorage::dataChanged, this, &NewRequestWizard::dataChanged);
}

void NewRequestWizard::dataChanged(QString dataname, QList<TYPE_ID> uids)
{
    if (dataname != PASS_REQUEST_DATANAME || !uids.contains(requestUid))
        return;
    processPage()->showMessage(tr("Заявка создана"));
    processPage()->finish(true);
    disconnect(waitingForStore);
    setSubjectToPages(subjectUid);
    emit selectRequest(requestUid);
}
