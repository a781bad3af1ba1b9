/// @file
/// The result codes of every fallible operation.
#ifndef IKELEX_RESULT_H
#define IKELEX_RESULT_H

#include <ikelex/export.h>

/// What every fallible operation returns.
typedef int KelResult;

/// The values of a KelResult.
enum {
    KEL_OK = 0,               ///< success
    KEL_ERR_FAIL = 1,         ///< format not recognised, or a depth the PNG writer cannot write
    KEL_ERR_SAVE_FORMAT = 2,  ///< Save was given a format for which no writer exists or is foreseen
    KEL_ERR_OPEN_FORMAT = 3,  ///< the format was recognised but has no reader
    KEL_ERR_FILTER_TYPE = 4,  ///< the filter type is not supported
    KEL_ERR_PARAM = 5,        ///< an argument or the image's state is invalid
    KEL_ERR_MEMORY = 6,       ///< an allocation failed
    KEL_ERR_FILE = 8,         ///< the file could not be opened, or the host's stream threw
    KEL_ERR_CODEC = 11,       ///< the JPEG or PNG library reported an error
    KEL_ERR_NOT_IMPLEMENTED = 1000  ///< Save was asked for GIF or TIFF, which no writer implements
};

extern "C" {

/// The code's name, such as "KEL_ERR_FILE", or "unknown result" for a value not listed above. The
/// text lives as long as the library. Any thread.
IKELEX_API const char* KelResultName(KelResult nResult);

/// What the code means, one sentence in English. The text lives as long as the library. Any thread.
IKELEX_API const char* KelResultMeaning(KelResult nResult);

}  // extern "C"

#endif  // IKELEX_RESULT_H
