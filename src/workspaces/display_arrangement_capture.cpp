#include "workspaces/display_arrangement_capture.h"

#include "platform/edid.h"
#include "workspaces/display_key.h"

namespace corvetta {

DisplayFingerprint displayFingerprint(const Screen& screen, const Screen& mainDisplay) {
    DisplayFingerprint fingerprint;
    fingerprint.resolution = screen.frame.size;
    fingerprint.physicalSize = screen.identity.physicalSize;
    fingerprint.scaleFactor = screen.backingScaleFactor;
    fingerprint.colorSpace = screen.identity.colorSpace;
    fingerprint.isBuiltIn = screen.isBuiltIn;
    fingerprint.relativePosition = {screen.frame.midX() - mainDisplay.frame.midX(),
                                    screen.frame.midY() - mainDisplay.frame.midY()};
    if (!screen.localizedName.empty()) {
        fingerprint.name = screen.localizedName;
    }
    fingerprint.persistentUUID = screen.identity.persistentUUID;
    fingerprint.hardwareSerial = screen.identity.serial;
    fingerprint.edidFingerprint = edidFingerprint(screen.identity.edid);
    return fingerprint;
}

std::string monitorIdentifier(const DisplayFingerprint& fingerprint) {
    if (fingerprint.persistentUUID && !fingerprint.persistentUUID->empty()) {
        return *fingerprint.persistentUUID;
    }
    return displayKey(fingerprint);
}

DisplayArrangementInfo captureDisplayArrangement(const std::vector<Screen>& screens, Date now) {
    DisplayArrangementInfo arrangement;
    arrangement.createdAt = now;
    for (const auto& screen : screens) {
        auto fingerprint = displayFingerprint(screen, screens.front());
        arrangement.monitorDisplayHeights[monitorIdentifier(fingerprint)] = screen.frame.height();
        arrangement.displayFingerprints.push_back(std::move(fingerprint));
    }
    if (!arrangement.displayFingerprints.empty()) {
        arrangement.mainDisplayFingerprint = arrangement.displayFingerprints.front();
    }
    arrangement.arrangementFingerprint = corvetta::arrangementFingerprint(
        arrangement.displayFingerprints, arrangement.mainDisplayFingerprint);
    return arrangement;
}

}  // namespace corvetta
