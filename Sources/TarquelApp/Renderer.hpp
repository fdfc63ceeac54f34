#pragma once

#include <QByteArray>
#include <filesystem>
#include <functional>

namespace tq {

/// What draws the windows: what Qt takes by itself, which is a graphics processor, or Qt Quick's own drawing in
/// software.
enum class Renderer { qts, software };

/// Where no graphics processor draws, OpenGL is computed by the processor (Mesa's llvmpipe), which costs more time and
/// memory than Qt's drawing in software: a compiler comes with it, and every picture is drawn whole.
///
/// A machine whose kernel offers nothing that renders is known by its device files, before OpenGL is loaded.
/// @param devices  "/dev" of this machine
/// @param openGL   makes a context and gives what it calls itself (GL_RENDERER); empty where there is none. Asked only
///                 when there is such a device, since one may be a display without a processor, or another user's.
Renderer rendererFor(const std::filesystem::path& devices, const std::function<QByteArray()>& openGL);

/// True when whoever starts the program says in Qt's variables what windows are drawn with
/// (https://doc.qt.io/qt-6/qtquick-visualcanvas-scenegraph-renderer.html, and "-adaptations.html" there).
bool rendererIsAskedFor();

/// Before the first window, with a QGuiApplication: windows are drawn in software where that is better, and where the
/// desktop has no OpenGL, for want of which Qt would end the program. What was asked for stays.
void chooseRenderer();

}  // namespace tq
