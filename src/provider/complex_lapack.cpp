// LAPACK of the complex provider: encode, bring workspace, call one native entry. Results go through locals into the
// caller's variables, `info` before others, after the native routine has returned.
#include "provider/encoding.hpp"
#include "provider/workspace.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexLapack::NativeComplexLapack() = default;

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
