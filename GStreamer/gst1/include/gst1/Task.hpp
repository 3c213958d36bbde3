#pragma once

#include <gst/gst.h>

#define gst_task_create(aFunction, aData) gst_task_new(aFunction, aData, nullptr)

/// 1.x has one call for both; this is 0.10's name of the one that says who frees the data.
#define gst_clock_id_wait_async_full(aId, aCallback, aData, aDestroy) \
    gst_clock_id_wait_async(aId, aCallback, aData, aDestroy)
