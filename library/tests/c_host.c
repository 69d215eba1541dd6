/* A host in plain C that links nothing of this project: registers the libraries, creates the driver by name,
 * goes on line over a port from a third library, and calls members by name. usage: c_host LIBQKEL4X LIBQHOST
 * LIBPORT */
#include <math.h>
#include <stdarg.h>

#include "host/class_factory.h"

static int failures;

#define EXPECT(claim)                                                     \
  do {                                                                    \
    if (!(claim)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #claim); \
      ++failures;                                                         \
    }                                                                     \
  } while (0)

typedef int32_t entry_point(void);

static int32_t call_entry(const char* library, const char* name) {
  void* loaded = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  void* symbol = loaded ? dlsym(loaded, name) : NULL;
  entry_point* entry;
  if (!symbol) {
    fprintf(stderr, "%s in %s: %s\n", name, library, dlerror());
    exit(2);
  }
  memcpy(&entry, &symbol, sizeof symbol);
  return entry();
}

static automation_value number(int32_t value) {
  automation_value result;
  memset(&result, 0, sizeof result);
  result.type = AUTOMATION_INT32;
  result.as.int32 = value;
  return result;
}

/* Invokes with values that it clears; a failure is kept in `last`. */
static automation_error last;
static automation_value invoke(automation_object* object, int32_t access, const char* member, size_t count,
                               ...) {
  automation_value arguments[8];
  automation_value result;
  va_list list;
  size_t i;
  automation_clear_error(&last);
  va_start(list, count);
  for (i = 0; i < count; ++i) arguments[i] = va_arg(list, automation_value);
  va_end(list);
  object->calls->invoke(object, access, member, arguments, count, &result, &last);
  for (i = 0; i < count; ++i) automation_clear(&arguments[i]);
  return result;
}

static void use_driver(const char* component) {
  automation_object* driver;
  automation_object* setup;
  automation_value settings, remote, value;

  if (automation_create("qkel4x.CLSkel4x", &driver, &last) != 0) {
    fprintf(stderr, "cannot create the driver: %d %s: %s\n", (int)last.number, last.source, last.description);
    exit(1);
  }
  EXPECT(call_entry(component, "DllCanUnloadNow") == 1);

  setup = driver->calls->query(driver, "IDriverSetup");
  EXPECT(setup != NULL);
  EXPECT(driver->calls->query(driver, "ISomethingElse") == NULL);
  settings = invoke(setup, AUTOMATION_GET, "Settings", 0);
  EXPECT(settings.type == AUTOMATION_OBJECT);
  remote = invoke(settings.as.object, AUTOMATION_GET, "Item", 1, automation_text("Remote Control"));
  EXPECT(remote.type == AUTOMATION_OBJECT);
  invoke(remote.as.object, AUTOMATION_PUT, "Value", 3, number(-1), number(-1),
         automation_text("QPort.clsEthernet"));
  EXPECT(last.number == 0);
  value = invoke(remote.as.object, AUTOMATION_GET, "Value", 2, number(-1), number(-1));
  EXPECT(value.type == AUTOMATION_TEXT && strcmp(value.as.block.data, "QPort.clsEthernet") == 0);
  automation_clear(&value);

  invoke(setup, AUTOMATION_PUT, "OnLine", 1, number(1));
  EXPECT(last.number == 0);
  value = invoke(setup, AUTOMATION_GET, "OnLine", 0);
  EXPECT(value.type == AUTOMATION_BOOL && value.as.boolean);
  invoke(setup, AUTOMATION_PUT, "OnLine", 1, number(1));
  EXPECT(last.number == 2002 && strcmp(last.description, "Driver already on-line") == 0);

  value = invoke(driver, AUTOMATION_GET, "measurerflevel", 0);
  EXPECT(value.type == AUTOMATION_DOUBLE && fabs(value.as.number + 51.5) < 1e-9);
  value = invoke(driver, AUTOMATION_GET, "Postfix", 0);
  EXPECT(value.type == AUTOMATION_TEXT && strcmp(value.as.block.data, "(dBm)") == 0);
  automation_clear(&value);
  value = invoke(driver, AUTOMATION_GET, "SerialNumber", 0);
  EXPECT(value.type == AUTOMATION_TEXT && strcmp(value.as.block.data, "200456") == 0);
  automation_clear(&value);
  invoke(driver, AUTOMATION_CALL, "MeasureResetBer", 0);
  EXPECT(last.number == 0);

  invoke(driver, AUTOMATION_PUT, "Mode", 1, number(15));
  EXPECT(last.number == -2147221124);
  EXPECT(last.source && strcmp(last.source, "clsKEL4x.Mode") == 0);
  EXPECT(last.description && strcmp(last.description, "Invalid property value (Mode = NTSC)") == 0);
  invoke(driver, AUTOMATION_PUT, "RfCenterFrequency", 1, automation_text("fast"));
  EXPECT(last.number == 13);
  invoke(driver, AUTOMATION_GET, "MeasureRfLevle", 0);
  EXPECT(last.number == 438 && strstr(last.description, "MeasureRfLevel"));
  invoke(driver, AUTOMATION_GET, "Prefix", 1, number(1));
  EXPECT(last.number == 450);
  /* The port does not know this query: its error 2013 is repeated, then completed with the error queue's
   * entry. */
  invoke(driver, AUTOMATION_GET, "MeasureBerAfterRS", 0);
  EXPECT(last.number == (int32_t)0x80040000 + 2004);
  EXPECT(strcmp(last.description, "Get MeasureBerAfterRS failed.  Error : 0,\"No error\"") == 0);

  invoke(setup, AUTOMATION_PUT, "OnLine", 1, number(0));
  EXPECT(last.number == 0);
  automation_clear(&remote);
  automation_clear(&settings);
  setup->calls->release(setup);
  EXPECT(call_entry(component, "DllCanUnloadNow") == 1);
  driver->calls->release(driver);
  EXPECT(call_entry(component, "DllCanUnloadNow") == 0);
}

/* The reference host's own port: an instrument simulated in this process. */
static void use_front_panel(const char* component) {
  automation_object* driver;
  automation_object* setup;
  automation_value settings, remote, value;
  EXPECT(automation_create("QKEL4x.clsKEL4x", &driver, &last) == 0);
  setup = driver->calls->query(driver, "IDriverSetup");
  settings = invoke(setup, AUTOMATION_GET, "Settings", 0);
  remote = invoke(settings.as.object, AUTOMATION_GET, "Item", 1, automation_text("Remote Control"));
  invoke(remote.as.object, AUTOMATION_PUT, "Value", 3, number(-1), number(-1),
         automation_text("QPort.clsGUI"));
  invoke(setup, AUTOMATION_PUT, "OnLine", 1, number(1));
  value = invoke(driver, AUTOMATION_GET, "Mode", 0);
  EXPECT(value.type == AUTOMATION_INT32 && value.as.int32 == 14);
  invoke(driver, AUTOMATION_PUT, "MeasureMode", 1, number(0));
  value = invoke(driver, AUTOMATION_GET, "MeasureVsbMerRmsDb", 0);
  EXPECT(value.type == AUTOMATION_DOUBLE && value.as.number > 10.0 && value.as.number < 60.0);
  automation_clear(&remote);
  automation_clear(&settings);
  setup->calls->release(setup);
  driver->calls->release(driver);
  EXPECT(call_entry(component, "DllCanUnloadNow") == 0);
}

static void use_small_classes(const char* component) {
  automation_object* statistics;
  automation_object* names;
  automation_object* same;
  automation_value value;
  EXPECT(automation_create("QKEL4x.clsStatistics", &statistics, &last) == 0);
  invoke(statistics, AUTOMATION_PUT, "Statistics", 1, automation_text("12:00:00,1"));
  EXPECT(last.number == 9);
  value = invoke(statistics, AUTOMATION_GET, "MonitoringTime", 0);
  EXPECT(value.type == AUTOMATION_DATE && fabs(value.as.number - 0.5) < 1e-12);
  statistics->calls->release(statistics);

  EXPECT(automation_create("QKEL4x.clsRegister", &names, &last) == 0);
  same = names->calls->query(names, "IRegister");
  value = invoke(same, AUTOMATION_CALL, "GetClassName", 0);
  EXPECT(value.type == AUTOMATION_TEXT && strcmp(value.as.block.data, "clsKEL4x") == 0);
  automation_clear(&value);
  same->calls->release(same);
  names->calls->release(names);
  EXPECT(call_entry(component, "DllCanUnloadNow") == 0);
}

static void refuse_what_is_not_registered(void) {
  automation_object* object;
  automation_clear_error(&last);
  EXPECT(automation_create("QKEL4x.clsKEL5x", &object, &last) == 1);
  EXPECT(last.number == 429 && object == NULL);
  automation_clear_error(&last);
  EXPECT(automation_create("../../etc/passwd", &object, &last) == 1);
  EXPECT(last.number == 429);
  automation_clear_error(&last);
}

int main(int argc, char** argv) {
  char path[4096];
  int i;
  automation_object* object;
  if (argc != 4) return 2;
  refuse_what_is_not_registered();
  for (i = 1; i < argc; ++i) EXPECT(call_entry(argv[i], "DllRegisterServer") == 0);
  EXPECT(automation_class_file("QKEL4x.clsKEL4x", path, sizeof path));
  EXPECT(strstr(path, "/automation/classes/qkel4x.clskel4x.class"));
  EXPECT(call_entry(argv[1], "DllCanUnloadNow") == 0);
  use_small_classes(argv[1]);
  use_driver(argv[1]);
  use_front_panel(argv[1]);
  EXPECT(call_entry(argv[3], "DllCanUnloadNow") == 0);

  /* The port's class file is the third library's by now: unregistering the host leaves it alone. */
  EXPECT(call_entry(argv[2], "DllUnregisterServer") == 0);
  EXPECT(automation_class_library("QPort.clsEthernet", path, sizeof path));
  EXPECT(!automation_class_library("QPort.clsGPIB", path, sizeof path));
  EXPECT(call_entry(argv[3], "DllUnregisterServer") == 0);
  EXPECT(call_entry(argv[1], "DllUnregisterServer") == 0);
  EXPECT(!automation_class_library("QPort.clsEthernet", path, sizeof path));
  automation_clear_error(&last);
  EXPECT(automation_create("QKEL4x.clsKEL4x", &object, &last) == 1);
  EXPECT(last.number == 429);
  automation_clear_error(&last);
  if (failures == 0) printf("created by name, called by name, released and unregistered\n");
  return failures == 0 ? 0 : 1;
}
