// Objects that live as long as somebody counts on them: a count within the object and a pointer that keeps
// it. For objects that may be given up while one of their own operations is under way: the operation holds
// one count, and the object goes when it is over. One thread; the count takes no lock.
#pragma once

#include <cstdint>
#include <utility>

#include "shared/libcxxutil/report.h"

class RefCounted {
  public:
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    void addRef() { ++refCount_; }
    // The last release destroys the object.
    void release() {
        GEN_ASSERT(refCount_ > 0);
        if (--refCount_ > 0) return;
        dying_ = true;
        delete this;
    }
    uint32_t refCount() const { return refCount_; }
    // Within the destructor: the count fell to 0, and nobody may hold the object any more.
    bool dying() const { return dying_; }

  protected:
    RefCounted() = default;
    virtual ~RefCounted() { GEN_ASSERT(refCount_ == 0); }

  private:
    uint32_t refCount_ = 1;  // the maker's
    bool dying_ = false;
};

template <class T>
class Ref {
  public:
    Ref() = default;
    // Holds the object as well; null holds nothing.
    explicit Ref(T* object) : object_(object) {
        if (object_) object_->addRef();
    }
    Ref(const Ref& other) : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_) object_->release();
    }
    // Takes over the maker's count.
    static Ref adopt(T* object) {
        Ref ref;
        ref.object_ = object;
        return ref;
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    T* object_ = nullptr;
};

template <class T, class... Arguments>
Ref<T> ref_Make(Arguments&&... arguments) {
    return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}
