// A pixel of one of several images: image index and local x, y.
#pragma once

#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API ImageColorId {
public:
    /// Image -1 (none), pixel (0, 0).
    ImageColorId() : mImageIndex(-1), mLocalX(0), mLocalY(0) {}
    ImageColorId(int imageIndex, int localX, int localY)
        : mImageIndex(imageIndex), mLocalX(localX), mLocalY(localY) {}

    void Set(int imageIndex, int localX, int localY) {
        mImageIndex = imageIndex;
        mLocalX = localX;
        mLocalY = localY;
    }
    void Set(const ImageColorId& other) { *this = other; }

    int GetImageIndex() const { return mImageIndex; }
    int GetLocalX() const { return mLocalX; }
    int GetLocalY() const { return mLocalY; }
    void SetImageIndex(int imageIndex) { mImageIndex = imageIndex; }
    void SetLocalX(int localX) { mLocalX = localX; }
    void SetLocalY(int localY) { mLocalY = localY; }

private:
    int mImageIndex;
    int mLocalX;
    int mLocalY;
};

}  // namespace ZOL
