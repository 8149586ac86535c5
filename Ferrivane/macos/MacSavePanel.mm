#import "Ferrivane/macos/MacSavePanel.h"

#import <Cocoa/Cocoa.h>

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {

static_assert(SavePanel::ok == NSModalResponseOK);

void MacSavePanel::show(const Question& question, std::function<void(Answer)> completion) {
    NSSavePanel* const panel = [NSSavePanel savePanel];
    panel.directoryURL = fileURL(question.directory);
    panel.nameFieldStringValue = nsString(question.fileName);
    panel.canCreateDirectories = NO;
    panel.showsTagField = NO;
    panel.prompt = nsString(question.button);
    panel.title = nsString(question.title);
    panel.message = nsString(question.message);
    const NSModalResponse response = [panel runModal];
    completion({.response = static_cast<int>(response), .file = optionalPath(panel.URL)});
}

}  // namespace ferrivane
