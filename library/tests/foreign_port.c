/* A transport in a library of its own, in plain C: it answers a few queries and counts what it is sent. */
#include <strings.h>

#include "host/class_factory.h"

#define EXPORT __attribute__((visibility("default")))

int32_t DllGetClassObject(const char* class_name, automation_object** class_object, automation_error* error);
int32_t DllCanUnloadNow(void);
int32_t DllRegisterServer(void);
int32_t DllUnregisterServer(void);

typedef struct port {
  automation_object object; /* first, so that a pointer to it is a pointer to the port */
  int32_t references;
  int32_t on_line;
  double timeout;
  automation_object* settings;
  char* name;
} port;

static int32_t living;

static void retain(automation_object* object) { ++((port*)object)->references; }

static void release(automation_object* object) {
  port* self = (port*)object;
  if (--self->references > 0) return;
  if (self->settings) self->settings->calls->release(self->settings);
  free(self->name);
  free(self);
  --living;
}

static automation_object* query(automation_object* object, const char* interface_name) {
  if (strcasecmp(interface_name, "IDriverSetup") != 0) return NULL;
  retain(object);
  return object;
}

static const char* reply_to(const char* command) {
  if (strcmp(command, "SYST:ERR?") == 0) return "0,\"No error\"";
  if (strcmp(command, "READ:RF:LEVEL?") == 0) return "-51.5 (dBm)";
  if (strcmp(command, "*IDN?") == 0) return "HALVERN&TOSKE,KEL 43,200456,5.10";
  return NULL;
}

static int32_t invoke(automation_object* object, int32_t access, const char* member,
                      automation_value* arguments, size_t count, automation_value* result,
                      automation_error* error) {
  port* self = (port*)object;
  memset(result, 0, sizeof *result);
  memset(error, 0, sizeof *error);
  if (strcasecmp(member, "Settings") == 0 && access == AUTOMATION_GET) {
    self->settings->calls->retain(self->settings);
    result->type = AUTOMATION_OBJECT;
    result->as.object = self->settings;
    return 0;
  }
  if (strcasecmp(member, "Name") == 0 && access == AUTOMATION_PUT) {
    free(self->name);
    self->name = automation_text(arguments[0].as.block.data).as.block.data;
    return 0;
  }
  if (strcasecmp(member, "OnLine") == 0 && access == AUTOMATION_PUT) {
    self->on_line = arguments[0].as.boolean;
    return 0;
  }
  if (strcasecmp(member, "OnLine") == 0) {
    result->type = AUTOMATION_BOOL;
    result->as.boolean = self->on_line;
    return 0;
  }
  if (strcasecmp(member, "Timeout") == 0 && access == AUTOMATION_PUT) {
    self->timeout = arguments[0].as.number;
    return 0;
  }
  if (strcasecmp(member, "Timeout") == 0) {
    result->type = AUTOMATION_DOUBLE;
    result->as.number = self->timeout;
    return 0;
  }
  if (strcasecmp(member, "Write") == 0) return 0;
  if (strcasecmp(member, "Query") == 0 || strcasecmp(member, "Exchange") == 0) {
    const char* reply = reply_to(arguments[0].as.block.data);
    const int wanted =
        strcasecmp(member, "Query") == 0 || (count == 2 && arguments[1].type == AUTOMATION_TEXT);
    if (!wanted) return 0;
    if (!reply) return automation_fail(error, (int32_t)0x80040000 + 2013, "no reply within the time-out");
    if (count == 2) {
      automation_clear(&arguments[1]);
      arguments[1] = automation_text(reply);
    } else {
      *result = automation_text(reply);
    }
    return 0;
  }
  return automation_fail(error, 438, "the port has no such member");
}

static const automation_calls port_calls = {retain, release, query, invoke};

static int32_t create(automation_value* result, automation_error* error) {
  automation_value arguments[5];
  automation_value none;
  port* self = (port*)calloc(1, sizeof *self);
  int32_t failed;
  if (!self) return automation_fail(error, 7, "out of memory");
  self->object.calls = &port_calls;
  self->references = 1;
  self->timeout = 5.0;
  ++living;
  failed = automation_create("QAppPar.ParameterNode", &self->settings, error);
  if (!failed) {
    memset(arguments, 0, sizeof arguments);
    arguments[0] = automation_text("TCP/IP");
    arguments[1].type = arguments[2].type = AUTOMATION_INT32;
    arguments[1].as.int32 = 4;
    arguments[2].as.int32 = 3;
    arguments[3] = automation_text("");
    arguments[4] = automation_text("");
    failed = self->settings->calls->invoke(self->settings, AUTOMATION_CALL, "Initialise", arguments, 5, &none,
                                           error);
    automation_clear(&arguments[0]);
    automation_clear(&arguments[3]);
    automation_clear(&arguments[4]);
  }
  if (failed) {
    release(&self->object);
    return failed;
  }
  result->type = AUTOMATION_OBJECT;
  result->as.object = &self->object;
  return 0;
}

/* The class object needs no state and no count. */
static void keep(automation_object* object) { (void)object; }
static automation_object* no_interface(automation_object* object, const char* interface_name) {
  (void)object;
  (void)interface_name;
  return NULL;
}
static int32_t invoke_class(automation_object* object, int32_t access, const char* member,
                            automation_value* arguments, size_t count, automation_value* result,
                            automation_error* error) {
  (void)object;
  (void)access;
  (void)arguments;
  (void)count;
  memset(result, 0, sizeof *result);
  memset(error, 0, sizeof *error);
  if (strcasecmp(member, "CreateInstance") == 0) return create(result, error);
  return automation_fail(error, 438, "the class object has no such member");
}

static const automation_calls class_calls = {keep, keep, no_interface, invoke_class};
static automation_object the_class = {&class_calls};

EXPORT int32_t DllGetClassObject(const char* class_name, automation_object** class_object,
                                 automation_error* error) {
  if (strcasecmp(class_name, "QPort.clsEthernet") != 0)
    return automation_fail(error, 429, "there is no such class");
  *class_object = &the_class;
  return 0;
}

EXPORT int32_t DllCanUnloadNow(void) { return living == 0 ? 0 : 1; }

static const char* own_path(void) {
  static char path[4096];
  Dl_info library;
  if (!dladdr((void*)&the_class, &library) || !realpath(library.dli_fname, path)) return "";
  return path;
}

EXPORT int32_t DllRegisterServer(void) { return automation_register("QPort.clsEthernet", own_path()); }
EXPORT int32_t DllUnregisterServer(void) { return automation_unregister("QPort.clsEthernet", own_path()); }
