#pragma once

#include "objectinfo.h"
#include "pagelistwizard.h"
#include "taskinfo.h"

#include <QPointer>

class QAbstractItemView;
class QCheckBox;
class QLabel;
class QListView;
class QProgressBar;
class QStandardItemModel;
class QListWidget;
class StyledItemDelegate;
class VDWizardPage;

// Removes objects of the store: the first page lists them and asks for the go-ahead, the second
// hands one task "delete_object" per object to whoever listens to appendTask and shows how they
// end. Each task names the wizard's objectRemoved as the slot for its outcome: the uid removed,
// or 0 for a failure; outcomes are taken in the order of the tasks.
//
// The list's model answers, for each object, its type in column 1 (display role) and its
// parameters as a QVariantHash under role Qt::UserRole + 1 of column 0, so that a delegate can
// name the objects as it likes.
class VDPLATFORM_EXPORT DeleteObjectWizard : public PageListWizard
{
    Q_OBJECT
public:
    static constexpr int ParametersRole = Qt::UserRole + 1;

    explicit DeleteObjectWizard(QWidget* parent = nullptr);
    ~DeleteObjectWizard() override;

    void setUids(const QList<vorandel::TYPE_ID>& uids);
    QList<vorandel::TYPE_ID> uids() const { return m_uids; }
    // Whether the operator must tick a box to confirm before the objects go.
    void setNeedVerify(bool need);
    // The delegate of the list: of `view`, or of the wizard's own list when it is null. A
    // delegate without a parent becomes the wizard's.
    void setItemDelegate(StyledItemDelegate* delegate, QAbstractItemView* view);

    // The list of the first page and its model, and the outcomes of the second (for tests).
    QListView* listView() const { return m_list; }
    QStandardItemModel* listModel() const { return m_model; }
    QListWidget* resultList() const { return m_results; }

public slots:
    // The result of one removal task; 0 is a failure.
    void objectRemoved(vorandel::TYPE_ID uid);

signals:
    void appendTask(const vorandel::TaskInfo& task);

protected slots:
    void showButtons(int id) override;

private:
    void fillList();
    void sendTasks();
    QString nameOf(vorandel::TYPE_ID uid) const;

    VDWizardPage* m_listPage = nullptr;
    VDWizardPage* m_progressPage = nullptr;
    QListView* m_list = nullptr;
    QStandardItemModel* m_model = nullptr;
    QCheckBox* m_verify = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_summary = nullptr;
    QListWidget* m_results = nullptr;
    QList<vorandel::TYPE_ID> m_uids;
    QList<vorandel::TYPE_ID> m_pending;  // sent and not answered, in the order of sending
    bool m_sent = false;
    int m_failures = 0;
};
