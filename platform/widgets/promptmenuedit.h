#pragma once

#include "objectinfo.h"
#include "parameterizededit.h"

#include <QList>

#include <memory>

#include <trie>

class PromptMenuEditContentsFactory;
class QListWidget;

// A line edit that offers hits while the operator types: the uids whose keys in a search index
// begin with the text, drawn by a contents factory in a list below the field. Up and Down move
// through the hits, Return or a click chooses one and emits found(uid), Escape closes the list.
class VDPLATFORM_EXPORT PromptMenuEdit : public ParameterizedEdit
{
    Q_OBJECT
public:
    explicit PromptMenuEdit(QWidget* parent = nullptr);
    ~PromptMenuEdit() override;

    // The index to search; not owned, it must outlive the edit (the store's indices do).
    void setSearcher(TrieStatic<unsigned int>* searcher);
    // Draws the hits; the edit takes ownership.
    void setMenuFactory(PromptMenuEditContentsFactory* factory);
    // No more hits than this are offered.
    void setMaximumHits(int count);

    // The hits offered now, in the order shown; empty when the list is closed.
    QList<unsigned int> hits() const;
    bool isMenuVisible() const;

signals:
    void found(vorandel::TYPE_ID uid);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void search(const QString& text);
    void choose(int row);
    void hideMenu();

    TrieStatic<unsigned int>* m_searcher = nullptr;
    std::unique_ptr<PromptMenuEditContentsFactory> m_factory;
    QListWidget* m_menu = nullptr;
    QList<unsigned int> m_hits;
    int m_maximumHits = 20;
};
