#pragma once

#include <QHash>

// The platform's hash: a QHash that can also hand out a reference for a missing key,
// so that readers can chain lookups without copying or testing.
template <typename Key, typename T>
class VDHash : public QHash<Key, T>
{
public:
    using QHash<Key, T>::QHash;
    VDHash() = default;
    VDHash(const QHash<Key, T>& other) : QHash<Key, T>(other) {}

    // A reference to the stored value, or to a shared default-constructed one.
    const T& constValue(const Key& key) const
    {
        static const T empty{};
        const auto it = this->constFind(key);
        return it == this->cend() ? empty : it.value();
    }
};
