// Shows pictures and graphs in a window of GTK 4, drawn through the widget's own cairo_t:
//     gtk4_viewer FILE...
// The arrow keys walk through the files; Escape closes the window. GTK 4 is needed for this example alone: it
// is built where pkg-config finds gtk4, which Debian has as libgtk-4-dev.

#include <Imaging/Imaging.h>
#include <Platform/Codecs/Codec.h>
#include <Platform/Foundation/KeyedArchiver.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <algorithm>
#include <gtk/gtk.h>
#include <string>
#include <vector>

using namespace Imaging;
using namespace Imaging::Platform;

namespace {

struct Viewer {
    std::vector<std::string> files;
    std::size_t index = 0;
    std::shared_ptr<IMGImage> node; // null where the file cannot be shown
    GtkWindow* window = nullptr;
    GtkWidget* area = nullptr;
};

/// A graph that was archived, or a picture. Throws an NSException when it is neither.
std::shared_ptr<IMGImage> loadNode(const std::string& path) {
    NSError error;
    const auto bytes = dataWithContentsOfFile(path, pictureLimits().maximumBytes, &error);
    if (!bytes) throw NSException(NSGenericException, error.message);
    if (looksLikePropertyList(*bytes)) return unarchiveObjectOfClass<IMGImage>(*bytes);
    const auto picture = NSImage::imageWithData(*bytes, &error);
    if (picture == nullptr) throw NSException(NSGenericException, error.message);
    return imagingImage(picture);
}

/// Loads the file at the index and shows its name, or what is wrong with it, as the window's title.
void showFile(Viewer& viewer) {
    const std::string& path = viewer.files[viewer.index];
    std::string title = path;
    try {
        viewer.node = loadNode(path);
    } catch (const NSException& failure) {
        viewer.node = nullptr;
        title += ": " + failure.reason();
    }
    // Titles are UTF-8, file names anything.
    char* const shown = g_utf8_make_valid(title.c_str(), -1);
    gtk_window_set_title(viewer.window, shown);
    g_free(shown);
    gtk_widget_queue_draw(viewer.area);
}

/// The largest rectangle of the node's shape in the middle of the widget.
NSRect fitted(NSSize node, NSSize widget) {
    const float scale = std::min(widget.width / node.width, widget.height / node.height);
    const NSSize size = {node.width * scale, node.height * scale};
    return {{(widget.width - size.width) / 2, (widget.height - size.height) / 2}, size};
}

/// GTK calls this whenever the widget has to be drawn, at whatever size it has then. Nothing may be thrown
/// through GTK, which is C.
void draw(GtkDrawingArea*, cairo_t* cairo, int width, int height, gpointer data) {
    const auto& viewer = *static_cast<const Viewer*>(data);
    cairo_set_source_rgb(cairo, 0.15, 0.15, 0.15);
    cairo_paint(cairo);
    if (viewer.node == nullptr) return;
    try {
        const NSSize widget = {static_cast<float>(width), static_cast<float>(height)};
        NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCairo(cairo, height));
        viewer.node->drawInRect(fitted(viewer.node->imageSize(), widget), NSCompositeSourceOver, 1.0F, false);
    } catch (const NSException& failure) {
        g_warning("%s", failure.reason().c_str());
    }
    NSGraphicsContext::setCurrentContext(nullptr);
}

gboolean keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer data) {
    auto& viewer = *static_cast<Viewer*>(data);
    const std::size_t count = viewer.files.size();
    switch (key) {
    case GDK_KEY_Right:
    case GDK_KEY_Down:
        viewer.index = (viewer.index + 1) % count;
        break;
    case GDK_KEY_Left:
    case GDK_KEY_Up:
        viewer.index = (viewer.index + count - 1) % count;
        break;
    case GDK_KEY_Escape:
        gtk_window_close(viewer.window);
        return TRUE;
    default:
        return FALSE;
    }
    showFile(viewer);
    return TRUE;
}

/// GTK calls this with the files of the command line.
void open(GtkApplication* application, GFile** files, int count, const char*, gpointer data) {
    auto& viewer = *static_cast<Viewer*>(data);
    for (int i = 0; i < count; ++i) {
        char* const path = g_file_get_path(files[i]);
        if (path != nullptr) viewer.files.emplace_back(path);
        g_free(path);
    }
    if (viewer.files.empty()) return;

    viewer.window = GTK_WINDOW(gtk_application_window_new(application));
    viewer.area = gtk_drawing_area_new();
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(viewer.area), draw, &viewer, nullptr);
    gtk_window_set_child(viewer.window, viewer.area);
    gtk_window_set_default_size(viewer.window, 960, 640);
    GtkEventController* const keys = gtk_event_controller_key_new();
    g_signal_connect(keys, "key-pressed", G_CALLBACK(keyPressed), &viewer);
    gtk_widget_add_controller(GTK_WIDGET(viewer.window), keys);
    showFile(viewer);
    gtk_window_present(viewer.window);
}

void explain() { g_printerr("usage: gtk4_viewer FILE...\n"); }

} // namespace

int main(int argc, char** argv) {
    Viewer viewer;
    GtkApplication* const application = gtk_application_new(
        nullptr, static_cast<GApplicationFlags>(G_APPLICATION_HANDLES_OPEN | G_APPLICATION_NON_UNIQUE));
    g_signal_connect(application, "open", G_CALLBACK(open), &viewer);
    g_signal_connect(application, "activate", G_CALLBACK(explain), nullptr); // without files
    const int status = g_application_run(G_APPLICATION(application), argc, argv);
    g_object_unref(application);
    return status;
}
