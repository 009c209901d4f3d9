#pragma once

#include "objectinfo.h"
#include "parameterizededit.h"

#include <QList>

#include <memory>

#include <trie>

class PromptMenuEditContentsFactory;
class QListView;

// A line edit that offers hits while the operator types: the uids whose keys in a search index
// begin with the typed text (lower-cased, as the store's indices hold their keys), drawn by a
// contents factory in a list that opens under the field, ordered by their text.
//
// The list never takes the focus: the operator goes on typing, and the field steers the list.
// Up, Down, Page Up and Page Down move through the hits, Return or a click chooses one and emits
// found(uid), Escape closes the list, and so does leaving the field. Text set by the program
// opens no list. The texts of all hits are made at once (they give the order), the pictures
// only for the hits that come into view.
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
    // Rows of the list seen at once, the others by scrolling.
    void setVisibleHits(int count);

    // The hits offered now, in the order shown; empty when the list is closed.
    QList<unsigned int> hits() const;
    bool isMenuVisible() const;
    // The hit marked in the list (0 when none): Return would choose it.
    unsigned int currentHit() const;
    // The list itself (for tests and for the look of a page).
    QListView* menu() const { return m_menu; }

public slots:
    void hideMenu();

signals:
    void found(vorandel::TYPE_ID uid);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    class HitModel;
    class HitDelegate;

    void search(const QString& text);
    void showMenu();
    void choose(const QModelIndex& index);
    void moveBy(int rows);

    TrieStatic<unsigned int>* m_searcher = nullptr;
    std::unique_ptr<PromptMenuEditContentsFactory> m_factory;
    QListView* m_menu = nullptr;
    HitModel* m_hits = nullptr;
    int m_maximumHits = 1000;
    int m_visibleHits = 8;
};
