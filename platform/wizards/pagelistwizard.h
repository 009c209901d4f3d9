#pragma once

#include "vdplatform_export.h"

#include <QWizard>

class QListWidget;

// A wizard with the list of its pages beside them, the current one marked, so that the
// operator sees where he stands and what follows. Whenever the current page changes it calls
// showButtons(id), which a subclass overrides to lay out its buttons for that page and then
// calls here.
//
// Escape or the window's close button before the last page would throw away what the operator
// has typed: once he has typed or clicked in a page, the wizard asks first.
class VDPLATFORM_EXPORT PageListWizard : public QWizard
{
    Q_OBJECT
public:
    explicit PageListWizard(QWidget* parent = nullptr);
    ~PageListWizard() override;

    // The list beside the pages (for tests and for the look of a subclass).
    QListWidget* pageList() const { return m_pageList; }
    // The id of the page marked as the current one in the list; -1 before the first is shown.
    int markedPage() const;
    // Whether the operator has typed or clicked in one of the pages.
    bool isTouched() const { return m_touched; }

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

protected slots:
    // Brings the page list up to date with page `id` as the current one.
    virtual void showButtons(int id);

private:
    void fillPageList(int currentId);

    QListWidget* m_pageList = nullptr;
    bool m_touched = false;
};
