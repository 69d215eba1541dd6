#include "com/module.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "com/errors.h"
#include "com/object.h"
#include "com/registration.h"

namespace com {
namespace {

std::atomic<long> holds{0};

class Factory final : public IClassFactory {
 public:
  explicit Factory(const PublishedClass& published) : published_(published) { Hold(); }
  virtual ~Factory() { LetGo(); }

  STDMETHODIMP QueryInterface(REFIID interface_id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (interface_id != IID_IUnknown && interface_id != IID_IClassFactory) return E_NOINTERFACE;
    AddRef();
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID interface_id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Guarded(IID_IClassFactory, [&] { published_.create(interface_id, object); });
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    lock != FALSE ? Hold() : LetGo();
    return S_OK;
  }

 private:
  const PublishedClass& published_;
  std::atomic<ULONG> references_{1};
};

struct Library {
  HRESULT result = E_FAIL;
  ITypeLib* library = nullptr;  // never released: other modules may be gone by then
};

const Library& OwnLibrary() {
  static const Library own = [] {
    Library loaded;
    loaded.result = LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, &loaded.library);
    return loaded;
  }();
  return own;
}

}  // namespace

HMODULE ThisModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<const wchar_t*>(&kModule), &module);
  return module;
}

std::wstring ModulePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(ThisModule(), path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

HRESULT TypeInformation(REFIID interface_id, ITypeInfo** information) {
  const Library& own = OwnLibrary();
  if (FAILED(own.result)) return own.result;
  return own.library->GetTypeInfoOfGuid(interface_id, information);
}

void Hold() { ++holds; }
void LetGo() { --holds; }
bool Held() { return holds != 0; }

HRESULT ClassObject(const PublishedClass& published, REFIID interface_id, void** object) {
  return Guarded(IID_IClassFactory, [&] {
    auto* factory = new Factory(published);
    const HRESULT result = factory->QueryInterface(interface_id, object);
    factory->Release();
    ThrowIfFailed(result, "Asking the class object for its interface");
  });
}

HRESULT Register(bool for_this_user_only) {
  const Library& own = OwnLibrary();
  if (FAILED(own.result)) return own.result;
  return WriteEntries(RegistryEntries(*own.library), for_this_user_only);
}

HRESULT Unregister() {
  const Library& own = OwnLibrary();
  if (FAILED(own.result)) return own.result;
  return RemoveEntries(RegistryEntries(*own.library));
}

}  // namespace com
