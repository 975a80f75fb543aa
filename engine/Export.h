#pragma once

/// Export macros of the libraries. Each library is compiled with hidden visibility and with its own
/// HALVERN_<NAME>_BUILD defined; everybody else imports.
#if defined(_WIN32)
#    define HALVERN_EXPORT __declspec(dllexport)
#    define HALVERN_IMPORT __declspec(dllimport)
#else
#    define HALVERN_EXPORT __attribute__((visibility("default")))
#    define HALVERN_IMPORT __attribute__((visibility("default")))
#endif

#if defined(HALVERN_CORE_BUILD)
#    define HALVERN_CORE_API HALVERN_EXPORT
#else
#    define HALVERN_CORE_API HALVERN_IMPORT
#endif

#if defined(HALVERN_SCENE_BUILD)
#    define HALVERN_SCENE_API HALVERN_EXPORT
#else
#    define HALVERN_SCENE_API HALVERN_IMPORT
#endif

#if defined(HALVERN_ENGINE_BUILD)
#    define HALVERN_ENGINE_API HALVERN_EXPORT
#else
#    define HALVERN_ENGINE_API HALVERN_IMPORT
#endif

#if defined(HALVERN_QT_BUILD)
#    define HALVERN_QT_API HALVERN_EXPORT
#else
#    define HALVERN_QT_API HALVERN_IMPORT
#endif
