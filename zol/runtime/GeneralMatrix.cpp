// Dense column-major matrices: the storage behind covariance fits and the dense
// least-squares solver.
#include <zol/runtime/GeneralMatrixInternal.h>

#include <algorithm>
#include <utility>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

GeneralMatrix::GeneralMatrix() : mRowCount(0), mColCount(0), mpValues(nullptr) {}

GeneralMatrix::GeneralMatrix(int rowCount, int colCount)
    : mRowCount(0), mColCount(0), mpValues(nullptr) {
    Init(rowCount, colCount);
}

GeneralMatrix::GeneralMatrix(const GeneralMatrix& other)
    : mRowCount(0), mColCount(0), mpValues(nullptr) {
    *this = other;
}

GeneralMatrix::GeneralMatrix(GeneralMatrix&& other) noexcept
    : mRowCount(other.mRowCount), mColCount(other.mColCount), mpValues(other.mpValues) {
    other.mRowCount = 0;
    other.mColCount = 0;
    other.mpValues = nullptr;
}

GeneralMatrix& GeneralMatrix::operator=(const GeneralMatrix& other) {
    if (this == &other) return *this;
    if (!other.IsInitialized()) {
        Free();
        return *this;
    }
    const size_t size = static_cast<size_t>(other.mRowCount) * other.mColCount;
    if (static_cast<size_t>(mRowCount) * mColCount != size || mpValues == nullptr) {
        delete[] mpValues;
        mpValues = new double[size];
    }
    mRowCount = other.mRowCount;
    mColCount = other.mColCount;
    std::copy(other.mpValues, other.mpValues + size, mpValues);
    return *this;
}

GeneralMatrix& GeneralMatrix::operator=(GeneralMatrix&& other) noexcept {
    if (this == &other) return *this;
    delete[] mpValues;
    mRowCount = other.mRowCount;
    mColCount = other.mColCount;
    mpValues = other.mpValues;
    other.mRowCount = 0;
    other.mColCount = 0;
    other.mpValues = nullptr;
    return *this;
}

GeneralMatrix::~GeneralMatrix() { delete[] mpValues; }

void GeneralMatrix::Init(int rowCount, int colCount) {
    Free();
    if (rowCount <= 0 || colCount <= 0) return;
    mRowCount = rowCount;
    mColCount = colCount;
    mpValues = new double[static_cast<size_t>(rowCount) * colCount]();
}

void GeneralMatrix::Free() {
    delete[] mpValues;
    mpValues = nullptr;
    mRowCount = 0;
    mColCount = 0;
}

void GeneralMatrix::SetValue(int row, int col, double value) {
    if (mpValues == nullptr) {
        LogLine("Error: GeneralMatrix is not initialize: ");
        return;
    }
    mpValues[static_cast<size_t>(mRowCount) * col + row] = value;
}

double GeneralMatrix::GetValue(int row, int col) const {
    if (mpValues == nullptr) return 0.0;
    return mpValues[static_cast<size_t>(mRowCount) * col + row];
}

GeneralMatrix3::GeneralMatrix3() : mValues{}, mIsInitialized(true) {}

void GeneralMatrix3::Free() {
    std::fill(mValues, mValues + 9, 0.0);
    mIsInitialized = false;
}

void GeneralMatrix3::Init() {
    std::fill(mValues, mValues + 9, 0.0);
    mIsInitialized = true;
}

void GeneralMatrix3::SetValue(int row, int col, double value) {
    if (!mIsInitialized) {
        LogLine("Error: GeneralMatrix3 is not initialize: ");
        return;
    }
    mValues[3 * col + row] = value;
}

}  // namespace ZOL
