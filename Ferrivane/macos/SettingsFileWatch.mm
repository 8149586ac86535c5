#import "Ferrivane/macos/SettingsFileWatch.h"

#include <fcntl.h>
#include <unistd.h>

static constexpr int64_t kMoment = 50 * NSEC_PER_MSEC;

@implementation FVSettingsFileWatch {
    std::filesystem::path _file;
    void (^_changed)(void);
    NSMutableArray<dispatch_source_t>* _sources;
    BOOL _isTelling;
}

- (instancetype)initWithFile:(const std::filesystem::path&)file changed:(void (^)(void))changed {
    self = [super init];
    if (!self) return nil;
    _file = file;
    _changed = [changed copy];
    _sources = [NSMutableArray array];
    [self watch];
    return self;
}

- (void)dealloc {
    [self stop];
}

- (void)watch {
    [self stop];
    // A file that replaces this one comes into the folder; one that is written in place does not.
    [self watch:_file.parent_path()];
    [self watch:_file];
    std::error_code error;
    const auto target = std::filesystem::read_symlink(_file, error);
    if (!error) [self watch:(_file.parent_path() / target).parent_path()];
}

- (void)stop {
    for (dispatch_source_t source in _sources) dispatch_source_cancel(source);
    [_sources removeAllObjects];
}

- (void)watch:(const std::filesystem::path&)path {
    const int descriptor = ::open(path.c_str(), O_EVTONLY | O_CLOEXEC);
    if (descriptor < 0) return;
    const uintptr_t events = DISPATCH_VNODE_WRITE | DISPATCH_VNODE_EXTEND | DISPATCH_VNODE_DELETE |
                             DISPATCH_VNODE_RENAME;
    dispatch_source_t source = dispatch_source_create(
        DISPATCH_SOURCE_TYPE_VNODE, uintptr_t(descriptor), events, dispatch_get_main_queue());
    __weak FVSettingsFileWatch* weakSelf = self;
    dispatch_source_set_event_handler(source, ^{
      [weakSelf tellSoon];
    });
    dispatch_source_set_cancel_handler(source, ^{
      ::close(descriptor);
    });
    dispatch_activate(source);
    [_sources addObject:source];
}

- (void)tellSoon {
    // What is there now may be another file.
    [self watch];
    if (_isTelling) return;
    _isTelling = YES;
    __weak FVSettingsFileWatch* weakSelf = self;
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, kMoment), dispatch_get_main_queue(), ^{
      [weakSelf tell];
    });
}

- (void)tell {
    _isTelling = NO;
    _changed();
}

@end
