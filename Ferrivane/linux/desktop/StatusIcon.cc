#include "Ferrivane/linux/desktop/StatusIcon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

namespace ferrivane::StatusIcon {
namespace {

constexpr const char* kName = "com.hollowmere.ferrivane-symbolic";
constexpr std::array kSizes{16, 22, 24, 32, 48};
constexpr guchar kGrey = 0x87;

bool isIn(const std::filesystem::path& dataFolder) {
    const auto file = dataFolder / "icons/hicolor/symbolic/apps" / (kName + std::string(".svg"));
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

struct Point {
    double x;
    double y;
};

double distance(Point point, Point start, Point end) {
    const Point line{end.x - start.x, end.y - start.y};
    const double square = line.x * line.x + line.y * line.y;
    const double along = (point.x - start.x) * line.x + (point.y - start.y) * line.y;
    const double place = square > 0 ? std::clamp(along / square, 0.0, 1.0) : 0.0;
    return std::hypot(point.x - start.x - place * line.x, point.y - start.y - place * line.y);
}

// The shape of the symbolic icon, 16 wide and high: a stem that parts into three ways, each with a
// dot at its end. How far outside of it a point lies; inside less than 0.
double outside(Point point) {
    constexpr double kHalfLine = 1;
    constexpr double kRadius = 2;
    const double upper = std::min(point.y, 16 - point.y);  // both halves are alike
    const Point folded{point.x, upper};
    const double lines =
        std::min({distance(folded, {2, 8}, {9.2, 8}), distance(folded, {4.2, 8}, {8.5, 3}),
                  distance(folded, {8.5, 3}, {9.2, 3})});
    const double dots =
        std::min(distance(folded, {13, 3}, {13, 3}), distance(folded, {13, 8}, {13, 8}));
    return std::min(lines - kHalfLine, dots - kRadius);
}

GVariant* pixmap(int size) {
    std::vector<guchar> bytes;
    bytes.reserve(static_cast<std::size_t>(size * size) * 4);
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            const double scale = size / 16.0;
            const double edge = outside({(column + 0.5) / scale, (row + 0.5) / scale}) * scale;
            const double cover = std::clamp(0.5 - edge, 0.0, 1.0);
            bytes.insert(bytes.end(),
                         {static_cast<guchar>(std::lround(cover * 255)), kGrey, kGrey, kGrey});
        }
    }
    return g_variant_new("(ii@ay)", size, size,
                         g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(),
                                                   sizeof bytes[0]));
}

}  // namespace

const char* name() {
    bool isInstalled = isIn(g_get_user_data_dir());
    for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
        isInstalled = isInstalled || isIn(*folder);
    }
    return isInstalled ? kName : "";
}

GVariant* pixmaps() {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
    for (const int size : kSizes) g_variant_builder_add_value(&builder, pixmap(size));
    return g_variant_builder_end(&builder);
}

}  // namespace ferrivane::StatusIcon
