// Definitions of the exported numeric constants.
#include <zol/runtime/Constants.h>

namespace ZOL {

const double REAL_TOL = 1e-15;
const double REAL_LARGE = 1.7e+308;
const double ZOL_PI = 3.141592653589793;
const double ONE_RADIAN = 0.0174532925199433;  // written out, not derived from ZOL_PI
const short SHORT_LARGE = 32767;
const unsigned short USHORT_LARGE = 65535;
const int INT_LARGE = 2147483647;
const unsigned int UINT_LARGE = 4294967295u;

}  // namespace ZOL
