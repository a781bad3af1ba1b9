// The whole platform layer: streams, strings, variants, tracing, bounded memory functions.
//
// The library asks its host for these and for nothing else. A host that has its own supplies
// headers of these names (all but vamarchivememory.h; each may just include the one that has
// everything) with the same operations, and names the target that carries them in
// IKELEX_PLATFORM_TARGET (docs/embedding.md).
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
