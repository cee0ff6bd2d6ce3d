#pragma once

namespace corv {

/// Sets the names of the organisation and the application, which decide where settings, the log and
/// downloads are kept. After the application object is made and before anything asks for them.
void setApplicationNames();

} // namespace corv
