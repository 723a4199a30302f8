// Work arrays of LAPACK methods: the host's signatures have none, so a method brings those of its native routine. They
// are ordinary arrays, released when the method returns.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "provider/encoding.hpp"

namespace qrv::provider {

// An array of a method's own. Fails like any other array where it would be empty, as for a matrix of order 0.
template <class T>
class WorkArray {
public:
    explicit WorkArray(std::int64_t count) : elements_(allocate(count)) {}
    WorkArray(int factor, int n) : WorkArray(std::int64_t{factor} * n) {}
    T* data() const { return elements_.get(); }

private:
    static std::unique_ptr<T[]> allocate(std::int64_t count) {
        if (count < 0 || count > std::numeric_limits<int>::max())
            throw host::Providers::InvalidArraySizeError("work array of an invalid size");
        if (count == 0)
            throw host::Providers::IndexOutOfRangeError("work array has no elements");
        return std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(count));
    }

    std::unique_ptr<T[]> elements_;
};

// A size as a workspace query answers it, in the first element of the work array. What no int can hold is negative.
inline int answered_size(float size) {
    const double wide = size;
    return wide > -0x1p31 && wide < 0x1p31 ? static_cast<int>(wide) : std::numeric_limits<int>::min();
}
inline int answered_size(qrv_complex size) {
    return answered_size(size.re);
}

// Calls a native routine that wants workspace: once to be told how much, once with as much of it. `call` is given the
// arguments work, lwork and info. Result: info of the second call; that of the first one counts for nothing.
template <class T, class Call>
int with_queried_work(const Call& call) {
    T size{};
    int lwork = -1, info = 0;
    call(&size, &lwork, &info);
    lwork = answered_size(size);
    const WorkArray<T> work(lwork);
    call(work.data(), &lwork, &info);
    return info;
}

// The value of a native norm routine, called with its work array: `m` row sums for the infinity norm; for the others,
// which use none, the address of the matrix stands in.
template <class T, class Call>
float with_norm_work(host::MatrixNorm kind, int m, const T* a, const Call& call) {
    if (kind == host::MatrixNorm::Infinity)
        return call(WorkArray<float>(m).data());
    return call(reinterpret_cast<float*>(const_cast<T*>(a)));
}

} // namespace qrv::provider
