#pragma once

namespace mirelo::testing {

// Real widgets need an application object; GUI tests make it once per process.
void ensureGuiApplication();

} // namespace mirelo::testing
