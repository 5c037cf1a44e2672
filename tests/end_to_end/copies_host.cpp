#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int num_failures = 0;

/// One copy of the library.
class Copy {
 public:
  Copy(const char* path, int scope) : handle_(dlopen(path, RTLD_NOW | scope)) {
    if (handle_ != nullptr) return;
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(2);
  }

  void Open(const char* what, const char* project) {
    if (Function<int (*)(const char*)>("dzel2_hasSurrogate")(project) == 0) return;
    const char* const error = Function<const char* (*)()>("dzel2_getLastError")();
    std::fprintf(stderr, "%s: %s: %s\n", what, project, error != nullptr ? error : "");
    ++num_failures;
  }
  void CloseAll() { Function<int (*)()>("dzel2_cleanup")(); }
  void Unload() {
    CloseAll();
    dlclose(handle_);
  }

 private:
  template <class Pointer>
  Pointer Function(const char* name) const {
    return reinterpret_cast<Pointer>(dlsym(handle_, name));
  }

  void* handle_;
};

}  // namespace

/// Opens two projects in two copies of the library, then in each of them after the other was
/// unloaded; ends with the number of projects that did not open. Arguments: "local", "global" or
/// "deepbind" (how the copies are loaded), the copies, the projects.
int main(int argc, char** argv) {
  if (argc != 6) return 2;
  const int scope = std::strcmp(argv[1], "local") == 0    ? RTLD_LOCAL
                    : std::strcmp(argv[1], "global") == 0 ? RTLD_GLOBAL
                                                          : RTLD_DEEPBIND;
  Copy first(argv[2], scope);
  Copy second(argv[3], scope);
  for (int project = 4; project < argc; ++project) {
    first.Open("first", argv[project]);
    second.Open("second", argv[project]);
  }
  first.Unload();
  second.CloseAll();
  second.Open("second alone", argv[5]);
  Copy again(argv[2], scope);
  second.Unload();
  again.Open("first alone", argv[5]);
  return num_failures;
}
