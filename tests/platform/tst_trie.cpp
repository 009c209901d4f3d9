#include <QtTest>

#include <trie>

// The index's invariants: no empty sets, the reverse hash mirrors the forward map, no empty key.
class TestTrie : public QObject
{
    Q_OBJECT

    static void checkInvariants(const TrieStatic<unsigned int>& trie)
    {
        int pairs = 0;
        for (auto it = trie.words.cbegin(); it != trie.words.cend(); ++it) {
            QVERIFY(!it.key().isEmpty());
            QVERIFY(!it.value().isEmpty());
            for (unsigned int value : it.value()) {
                QVERIFY(trie.keysOf.values(value).contains(it.key()));
                ++pairs;
            }
        }
        QCOMPARE(trie.keysOf.size(), pairs);
    }

    static QSet<unsigned int> find(const TrieStatic<unsigned int>& trie, const QString& prefix)
    {
        QSet<unsigned int> result;
        trie.contains(prefix, result);
        return result;
    }

private slots:
    void prefixSearchWalksAllMatchingKeysOnly()
    {
        TrieStatic<unsigned int> trie;
        trie.add(QStringLiteral("ив"), 1);
        trie.add(QStringLiteral("иван"), 2);
        trie.add(QStringLiteral("иванов"), 3);
        trie.add(QStringLiteral("ивушкин"), 4);
        trie.add(QStringLiteral("иж"), 5);   // sorts after every "ив…" key and ends the walk
        trie.add(QStringLiteral("и"), 6);
        QCOMPARE(find(trie, QStringLiteral("ив")), (QSet<unsigned int>{1, 2, 3, 4}));
        QCOMPARE(find(trie, QStringLiteral("иван")), (QSet<unsigned int>{2, 3}));
        QCOMPARE(find(trie, QStringLiteral("ивано")), (QSet<unsigned int>{3}));
        QCOMPARE(find(trie, QStringLiteral("я")), QSet<unsigned int>());
        QCOMPARE(find(trie, QStringLiteral("Ив")), QSet<unsigned int>());  // case-sensitive
        QCOMPARE(find(trie, QString()), QSet<unsigned int>());
    }

    // Words split on whitespace only: a double surname is one key. A value found under several
    // keys comes once.
    void addByWordsKeysEachWord()
    {
        TrieStatic<unsigned int> trie;
        trie.addByWords(QStringLiteral("анна  анастасия\tанн петрова-водкина"), 7);
        QCOMPARE(trie.keysOf.count(7), 4);
        QVERIFY(trie.words.contains(QStringLiteral("петрова-водкина")));
        QCOMPARE(find(trie, QStringLiteral("ан")), QSet<unsigned int>{7});
        checkInvariants(trie);
    }

    // The bulk load must leave exactly what adding pair by pair leaves, into an empty index and
    // into one that holds something already, also when the pairs were gathered in two batches
    // that share keys.
    void addingAllAtOnceEqualsAddingOneByOne()
    {
        const QStringList keys{QStringLiteral("иванов"), QStringLiteral("иван"), QStringLiteral("п-0001"),
                               QStringLiteral("01.12.2026 09:30:00"), QString(), QStringLiteral("ив")};
        TrieStatic<unsigned int>::Batch batch, names;
        TrieStatic<unsigned int> bulk, single, mixed, mixedSingle;
        mixed.add(QStringLiteral("иванов"), 99);
        mixedSingle.add(QStringLiteral("иванов"), 99);
        for (unsigned int value = 1; value <= 4000; ++value) {
            // Sometimes the same key twice, and the same key in both batches.
            for (const QString& key : {keys.at(value % keys.size()), keys.at((value * 7) % keys.size())}) {
                (key.startsWith(QLatin1String("ив")) && value % 3 ? names : batch).add(key, value);
                single.add(key, value);
                mixedSingle.add(key, value);
            }
        }
        batch.merge(names);
        bulk.addAll(batch);
        mixed.addAll(batch);
        QCOMPARE(bulk.words, single.words);
        QCOMPARE(mixed.words, mixedSingle.words);
        QCOMPARE(bulk.keysOf.size(), single.keysOf.size());
        QCOMPARE(mixed.keysOf.size(), mixedSingle.keysOf.size());
        for (const TrieStatic<unsigned int>* trie : {&bulk, &mixed}) {
            checkInvariants(*trie);
            QVERIFY(!trie->words.contains(QString()));
        }
        QCOMPARE(find(bulk, QStringLiteral("ив")), find(single, QStringLiteral("ив")));
    }

    void addAndRemoveKeepBothMapsInStep()
    {
        TrieStatic<unsigned int> trie;
        trie.add(QStringLiteral("иванов"), 1);
        trie.add(QStringLiteral("иванов"), 1);  // twice: one entry
        trie.add(QString(), 1);                 // no empty key
        QCOMPARE(trie.keysOf.count(1), 1);
        QVERIFY(!trie.words.contains(QString()));
        trie.add(QStringLiteral("иванов"), 2);
        trie.add(QStringLiteral("иваненко"), 2);
        trie.add(QStringLiteral("ивлев"), 3);
        trie.remove(2);
        QVERIFY(!trie.words.contains(QStringLiteral("иваненко")));  // its set became empty
        QCOMPARE(trie.words.value(QStringLiteral("иванов")), QSet<unsigned int>{1});
        QVERIFY(!trie.keysOf.contains(2));
        QCOMPARE(find(trie, QStringLiteral("ив")), (QSet<unsigned int>{1, 3}));
        trie.remove(99);  // never added: nothing changes
        QCOMPARE(trie.words.size(), 2);
        checkInvariants(trie);
    }
};

QTEST_GUILESS_MAIN(TestTrie)
#include "tst_trie.moc"
