#pragma once

#include <utility>

// The holder of a process-wide object that may be asked for at any moment of the exit. Plug-ins
// are destroyed by the plug-in loader's own clean-up, after main() has returned and in no order
// anyone controls; an object of this holder is destroyed at exit like any static, and from then
// on get() gives null instead of a dangling pointer. The pointer itself is a plain constant-
// initialised value that is never destroyed, so reading it stays valid to the very end.
template <typename T>
class ProcessWide
{
public:
    // The object, made by `make` on first use; null once it is gone at exit, or when `create`
    // is false and nobody has made it yet.
    template <typename Make>
    static T* get(bool create, Make make)
    {
        if (!s_object && create && !s_gone) {
            // Made before the object, so destroyed after everything that was made later.
            static Cleanup cleanup;
            s_object = make();
        }
        return s_object;
    }

    static T* get() { return s_object; }

    // Destroys the object; the next get() with `create` makes a new one.
    static void reset() { delete std::exchange(s_object, nullptr); }

private:
    struct Cleanup
    {
        ~Cleanup()
        {
            s_gone = true;
            reset();
        }
    };

    static inline T* s_object = nullptr;
    static inline bool s_gone = false;
};
