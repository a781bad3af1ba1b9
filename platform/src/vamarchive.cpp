// The archive base: its virtual table has its home here, so that the type is one in every program.
#include <platform/vamarchive.h>

CVamArchive::~CVamArchive() = default;
