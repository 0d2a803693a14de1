// SPDX-License-Identifier: Apache-2.0
// Export macro for the public interface of libkaldata. The library is built
// with hidden visibility; only what carries KALDATA_API is visible to users.
#ifndef KALDATA_KALEXPORT_H
#define KALDATA_KALEXPORT_H

#if defined(__GNUC__) || defined(__clang__)
#define KALDATA_API __attribute__((visibility("default")))
#else
#define KALDATA_API
#endif

#endif
