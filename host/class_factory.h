/* Objects across the borders of shared libraries, in plain C: how a program that links nothing of this
 * project creates "QKEL4x.clsKEL4x" and calls it by name, and how any library offers transports and other
 * host classes to the driver. Not for Windows, where the platform's own automation does this.
 *
 * A class has a programmatic name. Its library says so in a class file in the user's data folder
 * ($XDG_DATA_HOME/automation/classes, or ~/.local/share/automation/classes); automation_create finds the
 * file, loads the library and asks it for the class. A library of classes exports four functions:
 *
 *   int32_t DllGetClassObject(const char* class_name, automation_object** class_object, automation_error*
 * error); The class object: calling its member "CreateInstance" gives a new object. 0, or fails with 429.
 *   int32_t DllCanUnloadNow(void);      0 while no object of the library lives, else 1.
 *   int32_t DllRegisterServer(void);    Writes the library's class files. 0, or 1 where one cannot be
 * written. int32_t DllUnregisterServer(void);  Removes them, unless they have become another library's.
 *
 * What a library must offer to be the host of the driver, each class with members by name, every argument
 * given and a left-out one passed as nothing:
 *
 *   QAppPar.ParameterNode   Initialise(name, code1, code2, options, description), Name (get), Item(path)
 * (get), Count (get), Child(position) (get), AddChild(as Initialise), AddTree(node, -1, -1), ReadOnly (get,
 * put), OptionList (get, put), Value(-1, -1) (get, put) QAppInt.ErrorReporter   Raise(number, source,
 * description, help file, help context), ReportingEnabled (get, put) QAppInt.HostRuntime     SimulationActive
 * (get), Wait(seconds) QAppInt.MessageLog      Append(kind, source tag, text, detail), KindEnabled(kind)
 * (put) QPort.clsGPIB, QPort.clsComm, QPort.clsEthernet, QPort.clsGUI Name (get, put), Settings (get), OnLine
 * (get, put), Timeout (get, put), Write(command), Exchange(command, reply), Query(command); ReadBlock(count,
 * command) and WriteBlock(format, data, command) where the interface "BlockTransfer" can be queried. `reply`
 * is a text that the call replaces, or nothing where no reply is to be read.
 */
#ifndef HOST_CLASS_FACTORY_H
#define HOST_CLASS_FACTORY_H

#include <ctype.h>
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

/* NOLINTBEGIN(modernize-use-nullptr): C has none. */

#ifdef __cplusplus
extern "C" {
#endif

typedef struct automation_object automation_object;

enum automation_type {
  AUTOMATION_NOTHING,
  AUTOMATION_BOOL,
  AUTOMATION_INT16,
  AUTOMATION_INT32, /* enumerations too */
  AUTOMATION_DOUBLE,
  AUTOMATION_DATE, /* days since 30 December 1899 */
  AUTOMATION_TEXT, /* UTF-8 */
  AUTOMATION_BYTES,
  AUTOMATION_OBJECT
};

/* Texts and bytes are memory of malloc that belongs to the value, an object one reference. Texts end in a
 * zero byte that `size` does not count. */
typedef struct automation_value {
  int32_t type; /* automation_type */
  union {
    int32_t boolean;
    int16_t int16;
    int32_t int32;
    double number; /* double and date */
    struct {
      char* data;
      size_t size;
    } block; /* text and bytes */
    automation_object* object;
  } as;
} automation_value;

/* A failed call: the number as scripts see it (-2147221124 is the driver's 380), and texts of malloc or null.
 */
typedef struct automation_error {
  int32_t number;
  char* source;
  char* description;
  char* help_file;
  int32_t help_context;
} automation_error;

enum automation_access { AUTOMATION_GET = 1, AUTOMATION_PUT = 2, AUTOMATION_CALL = 3 };

typedef struct automation_calls {
  void (*retain)(automation_object* object);
  void (*release)(automation_object* object);
  /* The same object seen through another interface, such as "IDriverSetup", as a new reference; null where it
   * has no such interface. */
  automation_object* (*query)(automation_object* object, const char* interface_name);
  /* Reads, writes or calls a member; names count in any letter case. A written value is the last argument.
   * The arguments stay the caller's; one that the call replaces is replaced in place. 0, and the result,
   * which the caller clears; or 1, and the error, which the caller clears. */
  int32_t (*invoke)(automation_object* object, int32_t access, const char* member,
                    automation_value* arguments, size_t count, automation_value* result,
                    automation_error* error);
} automation_calls;

struct automation_object {
  const automation_calls* calls;
};

typedef int32_t automation_get_class_object(const char* class_name, automation_object** class_object,
                                            automation_error* error);

/* ---- Values and errors ---- */

static inline void automation_clear(automation_value* value) {
  if (value->type == AUTOMATION_TEXT || value->type == AUTOMATION_BYTES) free(value->as.block.data);
  if (value->type == AUTOMATION_OBJECT && value->as.object)
    value->as.object->calls->release(value->as.object);
  memset(value, 0, sizeof *value);
}

static inline void automation_clear_error(automation_error* error) {
  free(error->source);
  free(error->description);
  free(error->help_file);
  memset(error, 0, sizeof *error);
}

/* A copy of the bytes, a zero byte after them. */
static inline automation_value automation_block(int32_t type, const void* data, size_t size) {
  automation_value value;
  memset(&value, 0, sizeof value);
  value.as.block.data = (char*)malloc(size + 1);
  if (!value.as.block.data) return value;
  if (size != 0) memcpy(value.as.block.data, data, size);
  value.as.block.data[size] = 0;
  value.as.block.size = size;
  value.type = type;
  return value;
}

static inline automation_value automation_text(const char* text) {
  return automation_block(AUTOMATION_TEXT, text, strlen(text));
}

static inline int32_t automation_fail(automation_error* error, int32_t number, const char* description) {
  error->number = number;
  error->source = automation_text("Automation").as.block.data;
  error->description = automation_text(description).as.block.data;
  return 1;
}

/* ---- Class files ---- */

/* The path of the class file of a class, or of the folder of all class files where the name is null. 0 where
 * the name is none, the path is too long or there is no home folder. */
static inline int automation_class_file(const char* class_name, char* path, size_t size) {
  const char* data = getenv("XDG_DATA_HOME");
  const char* home = getenv("HOME");
  int length;
  size_t i;
  if (data && data[0] == '/') {
    length = snprintf(path, size, "%s/automation/classes", data);
  } else if (home && home[0] == '/') {
    length = snprintf(path, size, "%s/.local/share/automation/classes", home);
  } else {
    return 0;
  }
  if (length < 0 || (size_t)length + 1 >= size) return 0;
  if (!class_name) return 1;
  if (!isalpha((unsigned char)class_name[0])) return 0;
  path[length++] = '/';
  for (i = 0; class_name[i]; ++i) {
    const unsigned char character = (unsigned char)class_name[i];
    if (!isalnum(character) && character != '.' && character != '_') return 0;
    if ((size_t)length + 1 >= size) return 0;
    path[length++] = (char)tolower(character);
  }
  return (size_t)snprintf(path + length, size - (size_t)length, ".class") < size - (size_t)length;
}

/* The library that a class file names; 0 where the class is not registered. */
static inline int automation_class_library(const char* class_name, char* library, size_t size) {
  char path[4096];
  char line[4200];
  int found = 0;
  FILE* file = automation_class_file(class_name, path, sizeof path) ? fopen(path, "re") : NULL;
  if (!file) return 0;
  while (!found && fgets(line, (int)sizeof line, file)) {
    line[strcspn(line, "\n")] = 0;
    if (strncmp(line, "library=", 8) == 0 && strlen(line + 8) < size) {
      memcpy(library, line + 8, strlen(line + 8) + 1);
      found = 1;
    }
  }
  fclose(file);
  return found;
}

/* Makes `library`, an absolute path, the maker of a class. 0, or 1 where the class file cannot be written. */
static inline int32_t automation_register(const char* class_name, const char* library) {
  char path[4096];
  char fresh[4200];
  char* slash;
  FILE* file;
  int written;
  if (library[0] != '/' || !automation_class_file(class_name, path, sizeof path)) return 1;
  for (slash = strchr(path + 1, '/'); slash; slash = strchr(slash + 1, '/')) {
    *slash = 0;
    mkdir(path, 0777);
    *slash = '/';
  }
  snprintf(fresh, sizeof fresh, "%s.new", path);
  file = fopen(fresh, "we");
  if (!file) return 1;
  written = fprintf(file, "# Which library creates this class.\nname=%s\nlibrary=%s\n", class_name, library);
  if (fclose(file) != 0 || written < 0 || rename(fresh, path) != 0) {
    remove(fresh);
    return 1;
  }
  return 0;
}

/* Removes the class file of a class where it names `library`. 0, or 1 where it cannot be removed. */
static inline int32_t automation_unregister(const char* class_name, const char* library) {
  char path[4096];
  char registered[4096];
  if (!automation_class_library(class_name, registered, sizeof registered)) return 0;
  if (strcmp(registered, library) != 0) return 0;
  return automation_class_file(class_name, path, sizeof path) && remove(path) == 0 ? 0 : 1;
}

/* Creates an object of a registered class. 0 and the object, one reference; or 1 and an error 429. The
 * library stays loaded until the process ends. */
static inline int32_t automation_create(const char* class_name, automation_object** object,
                                        automation_error* error) {
  char library[4096];
  char text[8600];
  void* loaded;
  void* entry;
  automation_get_class_object* get_class_object;
  automation_object* class_object = NULL;
  automation_value result;
  int32_t failed;
  memset(&result, 0, sizeof result);
  *object = NULL;
  if (!automation_class_library(class_name, library, sizeof library)) {
    snprintf(text, sizeof text, "No library has registered the class %.200s", class_name);
    return automation_fail(error, 429, text);
  }
  loaded = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  if (!loaded) {
    const char* why = dlerror();
    snprintf(text, sizeof text, "The library of the class %.200s cannot be loaded: %s", class_name,
             why ? why : library);
    return automation_fail(error, 429, text);
  }
  entry = dlsym(loaded, "DllGetClassObject");
  if (!entry) {
    snprintf(text, sizeof text, "%s, the library of the class %.200s, has no DllGetClassObject", library,
             class_name);
    return automation_fail(error, 429, text);
  }
  memcpy(&get_class_object, &entry, sizeof entry);
  if (get_class_object(class_name, &class_object, error) != 0) return 1;
  failed =
      class_object->calls->invoke(class_object, AUTOMATION_CALL, "CreateInstance", NULL, 0, &result, error);
  class_object->calls->release(class_object);
  if (!failed) *object = result.as.object;
  return failed;
}

#ifdef __cplusplus
}
#endif

/* NOLINTEND(modernize-use-nullptr) */

#endif
