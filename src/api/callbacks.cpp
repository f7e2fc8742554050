// Exports of the three callback lists. What they do is the same for each; only the list differs.
#include "api/call.h"
#include "tavra/tavra_api.h"

namespace tavra::api {
namespace {

// The exports of one list, named by the record's member.
template <auto List>
struct Callbacks {
    template <typename Function>
    static TavraBool add(TavraHandle handle, Function function, void* context, std::uint32_t* identifier) {
        return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
            if (function == nullptr || identifier == nullptr) return Status(error::kInvalidArgument);
            return (camera.*List).add(function, context, *identifier);
        });
    }

    static TavraBool remove(TavraHandle handle, std::uint32_t identifier) {
        return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
            (camera.*List).remove(identifier);
            return Status();
        });
    }

    static TavraBool removeAll(TavraHandle handle) {
        return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
            (camera.*List).removeAll();
            return Status();
        });
    }

    static TavraBool count(TavraHandle handle, std::uint32_t* count) {
        return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
            if (count == nullptr) return Status(error::kInvalidArgument);
            *count = (camera.*List).count();
            return Status();
        });
    }

    template <typename Function>
    static TavraBool at(TavraHandle handle, std::uint32_t position, Function* function,
                        std::uint32_t* identifier) {
        return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
            if (function == nullptr || identifier == nullptr) return Status(error::kInvalidArgument);
            (camera.*List).at(position, *function, *identifier);
            return Status();
        });
    }

    // With capacity 0 the arrays may be null: that only asks for the count.
    template <typename Function>
    static TavraBool list(TavraHandle handle, std::uint32_t capacity, Function* functions,
                          std::uint32_t* identifiers, std::uint32_t* count) {
        return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
            const bool noArrays = functions == nullptr || identifiers == nullptr;
            if (count == nullptr || (noArrays && capacity > 0)) return Status(error::kInvalidArgument);
            *count = (camera.*List).list(capacity, functions, identifiers);
            return Status();
        });
    }
};

using Raw = Callbacks<&TAVRA_COMMON_PARAM::rawCallbacks>;
using PreviewBitmap = Callbacks<&TAVRA_COMMON_PARAM::previewBitmapCallbacks>;
using PreviewGdi = Callbacks<&TAVRA_COMMON_PARAM::previewGdiCallbacks>;

}  // namespace
}  // namespace tavra::api

TavraBool Tavra_AddRawCallback(TavraHandle handle, TavraRawCallback function, void* context,
                               std::uint32_t* identifier) {
    return tavra::api::Raw::add(handle, function, context, identifier);
}

TavraBool Tavra_RemoveRawCallback(TavraHandle handle, std::uint32_t identifier) {
    return tavra::api::Raw::remove(handle, identifier);
}

TavraBool Tavra_RemoveAllRawCallback(TavraHandle handle) {
    return tavra::api::Raw::removeAll(handle);
}

TavraBool Tavra_GetRawCallbackCount(TavraHandle handle, std::uint32_t* count) {
    return tavra::api::Raw::count(handle, count);
}

TavraBool Tavra_GetRawCallback(TavraHandle handle, std::uint32_t position, TavraRawCallback* function,
                               std::uint32_t* identifier) {
    return tavra::api::Raw::at(handle, position, function, identifier);
}

TavraBool Tavra_GetRawCallbackList(TavraHandle handle, std::uint32_t capacity, TavraRawCallback* functions,
                                   std::uint32_t* identifiers, std::uint32_t* count) {
    return tavra::api::Raw::list(handle, capacity, functions, identifiers, count);
}

TavraBool Tavra_AddPreviewBitmapCallback(TavraHandle handle, TavraPreviewBitmapCallback function,
                                         void* context, std::uint32_t* identifier) {
    return tavra::api::PreviewBitmap::add(handle, function, context, identifier);
}

TavraBool Tavra_RemovePreviewBitmapCallback(TavraHandle handle, std::uint32_t identifier) {
    return tavra::api::PreviewBitmap::remove(handle, identifier);
}

TavraBool Tavra_RemoveAllPreviewBitmapCallback(TavraHandle handle) {
    return tavra::api::PreviewBitmap::removeAll(handle);
}

TavraBool Tavra_GetPreviewBitmapCallbackCount(TavraHandle handle, std::uint32_t* count) {
    return tavra::api::PreviewBitmap::count(handle, count);
}

TavraBool Tavra_GetPreviewBitmapCallback(TavraHandle handle, std::uint32_t position,
                                         TavraPreviewBitmapCallback* function, std::uint32_t* identifier) {
    return tavra::api::PreviewBitmap::at(handle, position, function, identifier);
}

TavraBool Tavra_GetPreviewBitmapCallbackList(TavraHandle handle, std::uint32_t capacity,
                                             TavraPreviewBitmapCallback* functions,
                                             std::uint32_t* identifiers, std::uint32_t* count) {
    return tavra::api::PreviewBitmap::list(handle, capacity, functions, identifiers, count);
}

TavraBool Tavra_AddPreviewGDICallback(TavraHandle handle, TavraPreviewGDICallback function, void* context,
                                      std::uint32_t* identifier) {
    return tavra::api::PreviewGdi::add(handle, function, context, identifier);
}

TavraBool Tavra_RemovePreviewGDICallback(TavraHandle handle, std::uint32_t identifier) {
    return tavra::api::PreviewGdi::remove(handle, identifier);
}

TavraBool Tavra_RemoveAllPreviewGDICallback(TavraHandle handle) {
    return tavra::api::PreviewGdi::removeAll(handle);
}

TavraBool Tavra_GetPreviewGDICallbackCount(TavraHandle handle, std::uint32_t* count) {
    return tavra::api::PreviewGdi::count(handle, count);
}

TavraBool Tavra_GetPreviewGDICallback(TavraHandle handle, std::uint32_t position,
                                      TavraPreviewGDICallback* function, std::uint32_t* identifier) {
    return tavra::api::PreviewGdi::at(handle, position, function, identifier);
}

TavraBool Tavra_GetPreviewGDICallbackList(TavraHandle handle, std::uint32_t capacity,
                                          TavraPreviewGDICallback* functions, std::uint32_t* identifiers,
                                          std::uint32_t* count) {
    return tavra::api::PreviewGdi::list(handle, capacity, functions, identifiers, count);
}
