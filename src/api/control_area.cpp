// The grid of cells in which frames are measured.
#include <algorithm>

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

using Boundaries = CAveragePixelValue::Boundaries;

TavraBool Tavra_SetControlArea(TavraHandle handle, const std::uint16_t* x, const std::uint16_t* y) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(x, y));
        Boundaries columns;
        Boundaries rows;
        std::copy_n(x, columns.size(), columns.begin());
        std::copy_n(y, rows.size(), rows.begin());
        camera.statistics.setControlArea(columns, rows);
        return Status();
    });
}

TavraBool Tavra_GetControlArea(TavraHandle handle, std::uint16_t* x, std::uint16_t* y) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(x, y));
        Boundaries columns;
        Boundaries rows;
        camera.statistics.getControlArea(columns, rows);
        std::copy(columns.begin(), columns.end(), x);
        std::copy(rows.begin(), rows.end(), y);
        return Status();
    });
}
