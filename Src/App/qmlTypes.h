#pragma once

namespace corv {

/// Makes the native types known to the interface, in the order in which its modules are listed.
/// The singletons are made anew by each engine, which owns them. Interface thread, once, before the
/// first document is loaded.
void registerQmlTypes();

} // namespace corv
