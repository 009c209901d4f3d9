#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QList>
#include <QWidget>

// A tab of a properties dialog that shows and edits one object.
class VDPLATFORM_EXPORT PropertyBaseWidget : public QWidget
{
    Q_OBJECT
public:
    explicit PropertyBaseWidget(QWidget* parent = nullptr);

    // The name by which a dialog tells its tabs apart: the class name unless a tab says otherwise.
    virtual QString widgetUid() const;
    // Pages that a dialog may show as sub tabs of this tab; none unless the tab has some.
    virtual QList<QWidget*> subPages() const;

public slots:
    // The object to show: a hash of one entry, its uid to its record.
    virtual void setCurrent(const vorandel::OBJECT_HASH& objects);
    // Hands the tab's edits on (the dialog's save).
    virtual void applyChanges();
    // Forgets the tab's edits: the object shows as it was given.
    virtual void rejectChanges();
    // The server has saved the object of this uid: its edits become what the tab shows.
    virtual void saved(vorandel::TYPE_ID uid);
    // Brings one of subPages() to the front.
    virtual void showSubPage(int index);

public:
    virtual void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }
    const vorandel::OBJECT_HASH& current() const { return m_current; }
    // The record of the object shown, or an invalid one.
    const vorandel::ObjectInfo& currentObject() const;
    // The tab's edits as parameters of the current object.
    virtual QHash<QString, QString> editedProperties() const;
    // The tab's edits as records: the current object's uid to its uid, type, parent and only
    // the edited parameters; empty when nothing was edited.
    virtual vorandel::OBJECT_HASH changedObjects() const;

signals:
    void dataEdited();

protected:
    vorandel::OBJECT_HASH m_current;
    bool m_readOnly = false;
};
