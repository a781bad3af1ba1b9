// The library against the plain loops, plain libjpeg and libpng, memcpy, fread and fwrite.
#include "suite.h"

int main(int argc, char** argv) {
    return bench::Run(argc, argv, "ikelex against its yardsticks",
                      [](std::vector<bench::Row>& rows, const bench::Options& options) {
                          bench::AddCodecRows(rows, options);
                          bench::AddScaleRows(rows, options);
                          bench::AddPixelRows(rows, options);
                          bench::AddProcessRows(rows, options);
                      });
}
