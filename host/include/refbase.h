/*
 * Copyright (c) 2026 The rovanta Authors
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *     http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

#ifndef HOST_INCLUDE_REFBASE_H
#define HOST_INCLUDE_REFBASE_H

#include <atomic>
#include <functional>
#include <mutex>
// For std::exchange, which libc++'s <functional> brings and libstdc++'s does not.
#include <utility>

namespace OHOS {
// Base of objects owned through sptr. The last strong reference to go deletes the object.
class RefBase {
public:
    RefBase();
    RefBase(const RefBase &) = delete;
    RefBase &operator=(const RefBase &) = delete;
    virtual ~RefBase();

    void IncStrongRef(const void *objectId);
    void DecStrongRef(const void *objectId);
    int GetSptrRefCount();

private:
    std::atomic<int> strongRefs_;
};

// Strong pointer to a RefBase object.
template <typename T> class sptr {
public:
    sptr() = default;
    sptr(T *other);
    sptr(const sptr<T> &other);
    sptr(sptr<T> &&other) noexcept;
    template <typename O> sptr(const sptr<O> &other);
    ~sptr();

    sptr<T> &operator=(T *other);
    sptr<T> &operator=(const sptr<T> &other);
    sptr<T> &operator=(sptr<T> &&other) noexcept;
    template <typename O> sptr<T> &operator=(const sptr<O> &other);

    template <typename... Args> static sptr<T> MakeSptr(Args &&...args);

    T *GetRefPtr() const
    {
        return refs_;
    }

    operator T *() const
    {
        return refs_;
    }

    explicit operator bool() const
    {
        return refs_ != nullptr;
    }

    T *operator->() const
    {
        return refs_;
    }

    T &operator*() const
    {
        return *refs_;
    }

    void clear();

private:
    T *refs_ = nullptr;
};

template <typename T> sptr<T>::sptr(T *other) : refs_(other)
{
    if (refs_ != nullptr) {
        refs_->IncStrongRef(this);
    }
}

template <typename T> sptr<T>::sptr(const sptr<T> &other) : sptr(other.GetRefPtr()) {}

template <typename T> sptr<T>::sptr(sptr<T> &&other) noexcept : refs_(std::exchange(other.refs_, nullptr)) {}

template <typename T> template <typename O> sptr<T>::sptr(const sptr<O> &other) : sptr(other.GetRefPtr()) {}

template <typename T> sptr<T>::~sptr()
{
    clear();
}

template <typename T> sptr<T> &sptr<T>::operator=(T *other)
{
    sptr<T> held(other);
    std::swap(refs_, held.refs_);
    return *this;
}

template <typename T> sptr<T> &sptr<T>::operator=(const sptr<T> &other)
{
    return operator=(other.GetRefPtr());
}

template <typename T> sptr<T> &sptr<T>::operator=(sptr<T> &&other) noexcept
{
    sptr<T> held(std::move(other));
    std::swap(refs_, held.refs_);
    return *this;
}

template <typename T> template <typename O> sptr<T> &sptr<T>::operator=(const sptr<O> &other)
{
    return operator=(other.GetRefPtr());
}

template <typename T> template <typename... Args> sptr<T> sptr<T>::MakeSptr(Args &&...args)
{
    return sptr<T>(new T(std::forward<Args>(args)...));
}

template <typename T> void sptr<T>::clear()
{
    if (refs_ != nullptr) {
        std::exchange(refs_, nullptr)->DecStrongRef(this);
    }
}
} // namespace OHOS

#endif // HOST_INCLUDE_REFBASE_H
