#pragma once

#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QString>
#include <QStringList>

#include <memory>

namespace pathscope {

/**
 * Builds a program of our shader files.
 *
 * @param vertex, fragment  names of files, put together in their order
 * @throws std::runtime_error with what the driver says
 */
std::unique_ptr<QOpenGLShaderProgram> buildProgram(const QStringList& vertex,
                                                   const QStringList& fragment);

/** In debug builds logs what went wrong in OpenGL since the last call; otherwise does nothing. */
void checkGl(QOpenGLFunctions_3_3_Core& gl, const char* where);

} // namespace pathscope
