// The scenarios of the fault loops: every operation that allocates, copies or meets a stream.
#ifndef FAULTS_SCENARIOS_H
#define FAULTS_SCENARIOS_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kelimage/kelimage.h"
#include "support/faultyarchive.h"
#include "support/pictures.h"

// Sanitizers have a malloc and a memory map of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define FAULTS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define FAULTS_SANITIZED 1
#endif
#endif

namespace faults {

using support::Bytes;

// What a scenario works on, made before any fault begins.
struct Stage {
    CKelImage image;
    std::unique_ptr<support::FaultyArchive> pIn = std::make_unique<support::FaultyArchive>();
    support::FaultyArchive out;
    Bytes file;                  // the bytes that pIn reads
    support::Picture lent;       // a caller's bitmap
    IKelImage* pMade = nullptr;  // an image the scenario made, ended with the stage
    ~Stage() { DestroyImageObject(pMade); }
};

enum class Promise {
    kUnchanged,  // on a failure the image is as it was
    kAnything,   // on a failure the image is empty, or partly filled, and sound
};

struct Scenario {
    std::string strName;
    Promise ePromise;
    std::function<void(Stage&)> prepare;
    // The result; operations without one answer KEL_ERR_MEMORY when they changed nothing.
    std::function<KelResult(Stage&)> run;
};

const std::vector<Scenario>& AllScenarios();

// A file of the fuzz targets' corpus.
Bytes Load(const std::string& strFile);

// A scenario's end: its result, the image, what was made and what was written.
struct Outcome {
    KelResult nResult = KEL_OK;
    Bytes image, made, written;
    bool operator==(const Outcome&) const = default;
};
Outcome OutcomeOf(Stage& stage, KelResult nResult);

}  // namespace faults

#endif  // FAULTS_SCENARIOS_H
