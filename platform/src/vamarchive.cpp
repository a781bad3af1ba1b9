// The archive base. Its virtual table is here, so that the type is one in every program.
#include <platform/vamarchive.h>

CVamArchive::~CVamArchive() = default;
