#include "deleteobjectwizard.h"

#include "localstorage.h"
#include "styleditemdelegate.h"
#include "vdglobals.h"
#include "vdwizardpage.h"

#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QStandardItemModel>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {
enum PageId { ListPage = 0, ProgressPage = 1 };

// A page that is complete only when its owner says so.
class CheckedPage : public VDWizardPage
{
public:
    using VDWizardPage::VDWizardPage;
    std::function<bool()> complete;
    bool isComplete() const override { return complete ? complete() : true; }
};
}  // namespace

DeleteObjectWizard::DeleteObjectWizard(QWidget* parent) : PageListWizard(parent)
{
    setWindowTitle(tr("Мастер удаления"));
    setMinimumSize(640, 420);
    setOption(QWizard::NoCancelButtonOnLastPage, true);

    auto* listPage = new CheckedPage(this);
    m_listPage = listPage;
    m_listPage->setTitle(tr("Удаляемые объекты"));
    m_listPage->setSubTitle(tr("Будут удалены следующие объекты:"));
    m_listPage->setCommitPage(true);
    m_listPage->setButtonText(QWizard::CommitButton, tr("Удалить"));
    m_model = new QStandardItemModel(0, 2, this);
    m_list = new QListView(m_listPage);
    m_list->setObjectName(QStringLiteral("objectList"));
    m_list->setModel(m_model);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setWordWrap(true);
    m_verify = new QCheckBox(tr("Подтверждаю удаление"), m_listPage);
    m_verify->setObjectName(QStringLiteral("verifyBox"));
    m_verify->hide();
    connect(m_verify, &QCheckBox::toggled, m_listPage, &QWizardPage::completeChanged);
    listPage->complete = [this] { return !m_uids.isEmpty() && (m_verify->isHidden() || m_verify->isChecked()); };
    auto* listLayout = new QVBoxLayout(m_listPage);
    listLayout->addWidget(m_list);
    listLayout->addWidget(m_verify);

    auto* progressPage = new CheckedPage(this);
    m_progressPage = progressPage;
    m_progressPage->setTitle(tr("Удаление"));
    m_progress = new QProgressBar(m_progressPage);
    m_progress->setObjectName(QStringLiteral("progressBar"));
    m_results = new QTextBrowser(m_progressPage);
    m_results->setObjectName(QStringLiteral("results"));
    progressPage->complete = [this] { return m_sent && m_pending.isEmpty(); };
    auto* progressLayout = new QVBoxLayout(m_progressPage);
    progressLayout->addWidget(m_progress);
    progressLayout->addWidget(m_results);

    setPage(ListPage, m_listPage);
    setPage(ProgressPage, m_progressPage);
}

DeleteObjectWizard::~DeleteObjectWizard() = default;

void DeleteObjectWizard::setUids(const QList<vorandel::TYPE_ID>& uids)
{
    m_uids = uids;
    fillList();
    emit m_listPage->completeChanged();
}

void DeleteObjectWizard::setNeedVerify(bool need)
{
    m_verify->setVisible(need);
    m_verify->setChecked(false);
    emit m_listPage->completeChanged();
}

void DeleteObjectWizard::setItemDelegate(StyledItemDelegate* delegate, QAbstractItemView* view)
{
    if (delegate && !delegate->parent())
        delegate->setParent(this);
    (view ? view : m_list)->setItemDelegate(delegate);
}

void DeleteObjectWizard::fillList()
{
    m_model->removeRows(0, m_model->rowCount());
    for (const vorandel::TYPE_ID uid : qAsConst(m_uids)) {
        const vorandel::ObjectInfo object = vorandel::LocalStorage::instance()->object(uid);
        QVariantHash parameters;
        for (auto it = object.parameters.cbegin(); it != object.parameters.cend(); ++it)
            parameters.insert(it.key(), it.value());
        auto* name = new QStandardItem(VDGlobals::objectName(object));
        name->setData(parameters, ParametersRole);
        name->setData(uid, Qt::UserRole);
        name->setIcon(QIcon::fromTheme(QStringLiteral("object-%1").arg(object.type)));
        m_model->appendRow({name, new QStandardItem(object.type)});
    }
}

void DeleteObjectWizard::showButtons(int id)
{
    PageListWizard::showButtons(id);
    if (id == ProgressPage && !m_sent)
        sendTasks();
}

void DeleteObjectWizard::sendTasks()
{
    m_sent = true;
    m_pending = m_uids;
    m_progress->setRange(0, m_uids.size());
    m_progress->setValue(0);
    for (const vorandel::TYPE_ID uid : qAsConst(m_uids)) {
        const QString name = VDGlobals::objectName(vorandel::LocalStorage::instance()->object(uid));
        vorandel::TaskInfo task;
        task.uid = uid;
        task.type = QStringLiteral("delete_object");
        task.message = tr("Удален объект %1").arg(name);
        task.errorMessage = tr("Ошибка удаления объекта %1").arg(name);
        task.receiver = this;
        task.slot = QStringLiteral("objectRemoved");
        emit appendTask(task);
    }
    emit m_progressPage->completeChanged();
}

void DeleteObjectWizard::objectRemoved(vorandel::TYPE_ID uid)
{
    // Answers come in the order of the tasks; a failure names no object.
    if (m_pending.isEmpty())
        return;
    const vorandel::TYPE_ID expected = m_pending.takeFirst();
    const QString name = m_model->item(m_uids.indexOf(expected))->text();
    if (uid == 0) {
        ++m_failures;
        m_results->append(tr("Ошибка удаления: %1").arg(name.toHtmlEscaped()));
    } else {
        m_results->append(tr("Удалено: %1").arg(name.toHtmlEscaped()));
    }
    m_progress->setValue(m_progress->value() + 1);
    if (m_pending.isEmpty())
        m_results->append(m_failures == 0 ? tr("Удаление завершено.") : tr("Удаление завершено с ошибками."));
    emit m_progressPage->completeChanged();
}
