// SPDX-License-Identifier: Apache-2.0
/// @file kalrecorder.h
/// @brief kaldata-recorder: an implementation of the vorn::event service that
/// records every call, for tests, demos and benchmarks. Link it
/// (`kaldata::recorder`, pkg-config `kaldata-recorder`) instead of the
/// platform's event library; it is not thread-safe.
#ifndef KALDATA_KALRECORDER_H
#define KALDATA_KALRECORDER_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// Marks the recorder's exported functions.
#if defined(__GNUC__) || defined(__clang__)
#define KALRECORDER_API __attribute__((visibility("default")))
#else
#define KALRECORDER_API
#endif

/// The recording event service.
namespace kalrecorder {

/// @brief One event object as the library filled it.
struct record {
    std::string category;  ///< First argument of createObject ("net", "port", ...).
    std::string action;    ///< Second argument ("add", "rem", "rnm", ...).
    std::string source;    ///< Third argument.
    std::string fourth;    ///< Fourth argument.
    std::vector<std::pair<std::string, std::string>>
        data;           ///< Key/value pairs, in the order setData was called.
    bool sent = false;  ///< Whether sendEvent was called for it.
};

/// Records that were sent, in the order of sendEvent.
KALRECORDER_API std::vector<record> sent();
/// Every object created so far (sent or not), in the order of createObject.
KALRECORDER_API std::vector<record> created();
/// Number of createObject calls, including those answered with null.
KALRECORDER_API std::size_t createCalls();
/// Frees every recorded object and resets the counters.
KALRECORDER_API void clear();
/// When true, createObject answers null (the caller must then drop the record).
KALRECORDER_API void setNullObjects(bool on);
/// When false, objects are handed out and filled but not kept after sendEvent
/// (for long benchmark runs); sent() then stays empty.
KALRECORDER_API void setKeepRecords(bool on);
/// One line: "category/action key=value key=value ..."; a record that was not
/// sent is marked with a trailing " (unsent)".
KALRECORDER_API std::string format(const record& r);
/// format() of every sent record, in order.
KALRECORDER_API std::vector<std::string> lines();

}  // namespace kalrecorder

#endif
