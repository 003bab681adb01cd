#include "netcdf_library.h"

#include <stdexcept>

#include "programs.h"

namespace kesto {

#ifdef KESTO_MODULES
const NetcdfLibrary& netcdf() {
    // In the build folder, and where the command is installed.
    static const void* const table =
        loadTable({"kesto_netcdf.so", KESTO_MODULES "/kesto_netcdf.so"}, "kestoNetcdfLibrary");
    return *static_cast<const NetcdfLibrary*>(table);
}
#else
const NetcdfLibrary& netcdf() {
    throw std::runtime_error("this kesto has no NetCDF; use CSV, which it writes without --format");
}
#endif

}  // namespace kesto
