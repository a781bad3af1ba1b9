// ikelex: reads, transforms and writes pictures. This header includes all public ones.
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
