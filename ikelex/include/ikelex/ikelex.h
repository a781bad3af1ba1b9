/// @file
/// The library reads, transforms and writes pictures. This header includes all public ones but
/// handle.h, whose helpers are optional.
#ifndef IKELEX_IKELEX_H
#define IKELEX_IKELEX_H

#include <ikelex/bitmap.h>
#include <ikelex/export.h>
#include <ikelex/filters.h>
#include <ikelex/formats.h>
#include <ikelex/ikelimage.h>
#include <ikelex/parameters.h>
#include <ikelex/result.h>

#endif  // IKELEX_IKELEX_H
