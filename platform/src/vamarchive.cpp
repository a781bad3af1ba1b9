#include <platform/vamarchive.h>

CVamArchive::~CVamArchive() = default;
