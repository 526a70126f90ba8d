/*
 * complete_recording MODEL_FILE PROGRAM SIZE_HEADER
 *
 * Makes the program to be compiled from a model file. A complete model file is
 * copied as it is. One whose client died before the footer was written is cut
 * behind its last whole call and given the footer. SIZE_HEADER receives the
 * program's size, from which the launcher tells how much stack it needs.
 *
 * What is looked for, line by line:
 *
 *   model file = header call* footer
 *   header     = line* "     VALIDATE(error, interface.logCreate(...));" "   }"
 *   call       = line* "   VALIDATE(error, interface.<function>(...));" line*
 * ""
 *
 * Lines before a call's VALIDATE line may be blank, lines behind it are not.
 * The lines of header and footer that call the interface have five blanks.
 */

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

static const char kHeaderCall[] =
    "     VALIDATE(error, interface.logCreate(NULL, logLevel, &loghandle));";
static const char kCall[] = "   VALIDATE(error, interface.";

static const char* const kFooter[] = {
    "   if (logging) {",
    "     VALIDATE(error, interface.logFree(loghandle));",
    "   }",
    "",
    "   if (fclose(fp)) error = -1;",
    ("   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0"
     " : error;"),
    "}"};
enum { kFooterLines = sizeof(kFooter) / sizeof(kFooter[0]) };

typedef enum { kInHeader, kHeaderCallSeen, kBetweenCalls, kCallSeen } Place;

typedef struct {
  Place place;
  int footerLines; /* lines of the footer that were just read */
  uint64_t size;   /* bytes read */
  uint64_t whole;  /* bytes up to the end of the header or last whole call */
  uint64_t calls;  /* whole calls */

  /* The current line: its length, and as much of it as is compared. */
  uint64_t lineLength;
  char line[128];
} Scan;

static int lineIs(const Scan* scan, const char* text) {
  const size_t length = strlen(text);
  return scan->lineLength == length && memcmp(scan->line, text, length) == 0;
}

static int lineBegins(const Scan* scan, const char* text) {
  const size_t length = strlen(text);
  return scan->lineLength >= length && memcmp(scan->line, text, length) == 0;
}

static void endHeader(Scan* scan) {
  scan->place = kBetweenCalls;
  scan->whole = scan->size;
}

static void endCall(Scan* scan) {
  scan->place = kBetweenCalls;
  scan->whole = scan->size;
  ++scan->calls;
}

static void followFooter(Scan* scan) {
  if (scan->footerLines == kFooterLines ||
      !lineIs(scan, kFooter[scan->footerLines])) {
    scan->footerLines = 0;
  }
  if (lineIs(scan, kFooter[scan->footerLines])) ++scan->footerLines;
}

static void endLine(Scan* scan) {
  if (scan->place == kInHeader) {
    if (lineIs(scan, kHeaderCall)) scan->place = kHeaderCallSeen;
  } else if (scan->place == kHeaderCallSeen) {
    endHeader(scan);
  } else if (lineBegins(scan, kCall)) {
    scan->place = kCallSeen;
  } else if (scan->place == kCallSeen && scan->lineLength == 0) {
    endCall(scan);
  }
  if (scan->place >= kBetweenCalls) followFooter(scan);
  scan->lineLength = 0;
}

static void readBytes(Scan* scan, const char* bytes, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    ++scan->size;
    if (bytes[i] == '\n') {
      endLine(scan);
      continue;
    }
    if (scan->lineLength < sizeof(scan->line))
      scan->line[scan->lineLength] = bytes[i];
    ++scan->lineLength;
  }
}

static int isComplete(const Scan* scan) {
  return scan->footerLines == kFooterLines && scan->lineLength == 0;
}

static int scanFile(FILE* file, Scan* scan) {
  static char buffer[65536];
  size_t count;
  while ((count = fread(buffer, 1, sizeof(buffer), file)) != 0)
    readBytes(scan, buffer, count);
  return !ferror(file);
}

/* Copies the first `size` bytes. */
static int copyStart(FILE* from, FILE* to, uint64_t size) {
  static char buffer[65536];
  rewind(from);
  while (size != 0) {
    const size_t wanted = size < sizeof(buffer) ? (size_t)size : sizeof(buffer);
    const size_t count = fread(buffer, 1, wanted, from);
    if (count == 0 || fwrite(buffer, 1, count, to) != count) return 0;
    size -= count;
  }
  return 1;
}

static int writeFooter(FILE* file) {
  for (int i = 0; i < kFooterLines; ++i)
    if (fprintf(file, "%s\n", kFooter[i]) < 0) return 0;
  return 1;
}

static int writeProgram(FILE* model, const Scan* scan, const char* path) {
  FILE* program = fopen(path, "wb");
  if (!program) return 0;
  const int complete = isComplete(scan);
  const int written =
      copyStart(model, program, complete ? scan->size : scan->whole) &&
      (complete || writeFooter(program));
  return (fclose(program) == 0) & written;
}

static int writeSizeHeader(const Scan* scan, const char* path) {
  FILE* header = fopen(path, "w");
  if (!header) return 0;
  const int written =
      fprintf(header, "#define PROGRAM_SIZE %" PRIu64 "u\n", scan->size) > 0;
  return (fclose(header) == 0) & written;
}

static void report(const Scan* scan) {
  if (isComplete(scan)) {
    printf("The recording is complete: %" PRIu64 " calls.\n", scan->calls);
    return;
  }
  printf("The recording has no end. Completed a copy behind its %" PRIu64
         " whole calls; left out %" PRIu64 " bytes.\n",
         scan->calls, scan->size - scan->whole);
}

/* Returns the program's exit status. */
static int complete(FILE* model, const char* const* paths) {
  Scan scan = {0};
  if (!scanFile(model, &scan)) {
    fprintf(stderr, "%s: cannot be read\n", paths[0]);
    return 1;
  }
  if (scan.place < kBetweenCalls) {
    fprintf(stderr, "%s: holds no whole program header, nothing to replay\n",
            paths[0]);
    return 1;
  }
  if (!writeProgram(model, &scan, paths[1]) ||
      !writeSizeHeader(&scan, paths[2])) {
    fprintf(stderr, "%s: cannot be written\n", paths[1]);
    remove(paths[1]);
    return 1;
  }
  report(&scan);
  return 0;
}

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "Usage: %s MODEL_FILE PROGRAM SIZE_HEADER\n", argv[0]);
    return 2;
  }
  FILE* model = fopen(argv[1], "rb");
  if (!model) {
    fprintf(stderr, "%s: cannot be opened\n", argv[1]);
    return 1;
  }
  const char* const paths[] = {argv[1], argv[2], argv[3]};
  const int status = complete(model, paths);
  fclose(model);
  return status;
}
