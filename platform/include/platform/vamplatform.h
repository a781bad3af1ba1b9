/// @file
/// The whole platform layer, with streams, strings, variants, tracing and bounded memory functions.
///
/// The library asks its host for these (CVamArchiveMemory left out) and for nothing else, and
/// includes this header alone. A host that has its own supplies a header of this name with the same
/// operations, and names the target that carries it in IKELEX_PLATFORM_TARGET (docs/embedding.md).
#ifndef PLATFORM_VAMPLATFORM_H
#define PLATFORM_VAMPLATFORM_H

#include <platform/securemem.h>
#include <platform/vamarchive.h>
#include <platform/vamarchivefile.h>
#include <platform/vamarchivememory.h>
#include <platform/vamstring.h>
#include <platform/vamtrace.h>
#include <platform/vamvariant.h>

#endif  // PLATFORM_VAMPLATFORM_H
