#include "netcdf_library.h"

#include "platform.h"

namespace kesto {

const NetcdfLibrary& netcdf() {
    // In the build folder, and where the command is installed.
    static const void* const table =
        loadTable({"kesto_netcdf.so", KESTO_MODULES "/kesto_netcdf.so"}, "kestoNetcdfLibrary");
    return *static_cast<const NetcdfLibrary*>(table);
}

}  // namespace kesto
