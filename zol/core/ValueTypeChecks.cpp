// Compile-time guarantees of the plain value types: they are stored in large arrays
// and copied byte-wise, so they must stay trivially copyable and Color4 four bytes.
#include <type_traits>

#include <zol/core/Color4.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/Obb.h>
#include <zol/core/Plane3.h>
#include <zol/core/PointOnEdge.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>

namespace ZOL {

static_assert(sizeof(Color4) == 4, "Color4 is exactly four bytes");
static_assert(sizeof(Vector3) == 3 * sizeof(double), "Vector3 is three packed doubles");
static_assert(std::is_trivially_copyable<Vector2>::value, "Vector2");
static_assert(std::is_trivially_copyable<Vector3>::value, "Vector3");
static_assert(std::is_trivially_copyable<Color4>::value, "Color4");
static_assert(std::is_trivially_copyable<Plane3>::value, "Plane3");
static_assert(std::is_trivially_copyable<Obb>::value, "Obb");
static_assert(std::is_trivially_copyable<PointOnFace>::value, "PointOnFace");
static_assert(std::is_trivially_copyable<PointOnEdge>::value, "PointOnEdge");
static_assert(std::is_trivially_copyable<ImageColorId>::value, "ImageColorId");

}  // namespace ZOL
