// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what a shared library exports: the namespace of a public header, or a single declaration.
#define VELA_API __attribute__((visibility("default")))
