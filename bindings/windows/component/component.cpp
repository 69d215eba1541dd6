// QKEL4x.dll: the published classes, each a shell around the typed object that does the work.
#include <initguid.h>

#include <memory>
#include <utility>

#include "com/module.h"
#include "com/object.h"
#include "component/host_by_name.h"
#include "driver/settings/clsRegister.h"
#include "dual_methods.h"
#include "host/automation_error.h"
#include "host/host.h"
#include "qkel4x.h"

namespace component {
namespace {

class Statistics final : public com::Object<clsStatisticsMethods> {
 public:
  explicit Statistics(std::shared_ptr<qkel4x::clsStatistics> report) : report_(std::move(report)) {
    SetTarget(report_.get());
  }

 private:
  const std::shared_ptr<qkel4x::clsStatistics> report_;
};

class Register final : public com::Object<clsRegisterMethods, IRegisterMethods> {
 public:
  Register() {
    clsRegisterMethods::SetTarget(&register_);
    IRegisterMethods::SetTarget(&register_);
  }

 private:
  qkel4x::clsRegister register_;
};

class Driver final : public com::Object<clsKEL4xMethods, IDriverSetupMethods, IDriverIdentifyMethods> {
 public:
  Driver() {
    clsKEL4xMethods::SetTarget(&driver_);
    IDriverSetupMethods::SetTarget(&driver_);
    IDriverIdentifyMethods::SetTarget(&driver_);
  }

 private:
  qkel4x::clsKEL4x driver_;
};

void CreateDriver(REFIID interface_id, void** object) {
  static HostByName host_by_name;
  host::SetCurrentHost(&host_by_name);
  com::Create<Driver>(interface_id, object);
}

void CreateRegister(REFIID interface_id, void** object) { com::Create<Register>(interface_id, object); }

void CreateStatistics(REFIID interface_id, void** object) {
  com::Create<Statistics>(interface_id, object, std::make_shared<qkel4x::clsStatistics>());
}

constexpr com::PublishedClass kClasses[] = {
    {&CLSID_clsKEL4x, L"QKEL4x.clsKEL4x", L"Driver for the KEL model 40/43 TV test receiver", CreateDriver},
    {&CLSID_clsRegister, L"QKEL4x.clsRegister", L"The names under which a host lists this driver",
     CreateRegister},
    {&CLSID_clsStatistics, L"QKEL4x.clsStatistics", L"Decodes model 1x statistics report", CreateStatistics},
};

}  // namespace

void Form(const std::shared_ptr<qkel4x::clsStatistics>& from, ::_clsStatistics** to) {
  void* object = nullptr;
  com::Create<Statistics>(__uuidof(::_clsStatistics), &object, from);
  *to = static_cast<::_clsStatistics*>(object);
}

void Form(const std::shared_ptr<host::ParameterNode>& from, IDispatch** to) {
  *to = dynamic_cast<NodeByName&>(*from).Object();
  (*to)->AddRef();
}

}  // namespace component

namespace com {

const Module kModule{"QKEL4x", "QKEL4X.HLP", &LIBID_QKEL4x, component::kClasses};

}  // namespace com
