/* syscall_fault FOLDER LOG N FAULT COMMAND...: runs the command and meddles with the N-th of its
 * steps on files below FOLDER; 0: with none. FAULT is the number of an error that the step ends
 * with, "short" (a write takes one byte), "full" (from there on nothing can be written) or "kill" (the
 * process dies before the step). LOG receives the steps, one a line. The kernel's interface is
 * watched, not the C library's: stdio and streams make calls that cannot be replaced from outside.
 *
 * Status: the command's; 128 + the signal that ended it; 125 when nothing can be watched. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

enum { kCannotWatch = 125, kSignalled = 128, kMaxThreads = 64, kPath = 4096 };

#if defined(__x86_64__)
#include <sys/user.h>

static const char* folder;
static FILE* record;
static long fault_at;
static long error_number; /* 0: another kind of fault */
static int is_kill;
static int is_full;
static long num_steps;

/* Threads that are inside a call; `fault` is the result that the call shall end with, or 0. */
struct Thread {
  pid_t id;
  int inside;
  long fault;
};
static struct Thread threads[kMaxThreads];

static struct Thread* Find(pid_t id) {
  for (int i = 0; i < kMaxThreads; ++i)
    if (threads[i].id == id) return &threads[i];
  for (int i = 0; i < kMaxThreads; ++i)
    if (threads[i].id == 0) {
      threads[i].id = id;
      return &threads[i];
    }
  exit(kCannotWatch);
}

static void ReadText(pid_t id, uint64_t address, char* text) {
  struct iovec here = {text, kPath - 1};
  struct iovec there = {(void*)(uintptr_t)address, kPath - 1};
  ssize_t size = -1;
  /* A text near the end of a mapping: less, until it can be read. */
  while (there.iov_len > 0 && (size = process_vm_readv(id, &here, 1, &there, 1, 0)) < 0)
    there.iov_len /= 2;
  text[size < 0 ? 0 : size] = '\0';
}

static void ReadLink(pid_t id, uint64_t file, char* path) {
  char link[64];
  snprintf(link, sizeof link, "/proc/%d/fd/%d", (int)id, (int)file);
  const ssize_t size = readlink(link, path, kPath - 1);
  path[size < 0 ? 0 : size] = '\0';
}

/* Which step the call is, with its path; null: none that counts. */
static const char* Step(pid_t id, const struct user_regs_struct* regs, char* path) {
  const char* name;
  switch (regs->orig_rax) {
    case SYS_openat:
      ReadText(id, regs->rsi, path);
      name = (regs->rdx & (O_WRONLY | O_RDWR)) != 0 ? "create" : "open";
      break;
    case SYS_open:
      ReadText(id, regs->rdi, path);
      name = (regs->rsi & (O_WRONLY | O_RDWR)) != 0 ? "create" : "open";
      break;
    case SYS_rename:
      ReadText(id, regs->rdi, path);
      name = "rename";
      break;
    case SYS_read:
      ReadLink(id, regs->rdi, path);
      name = "read";
      break;
    case SYS_write:
    case SYS_writev:
    case SYS_pwrite64:
      ReadLink(id, regs->rdi, path);
      name = "write";
      break;
    case SYS_fsync:
    case SYS_fdatasync:
      ReadLink(id, regs->rdi, path);
      name = "fsync";
      break;
    case SYS_fchmod:
      ReadLink(id, regs->rdi, path);
      name = "fchmod";
      break;
    case SYS_close:
      ReadLink(id, regs->rdi, path);
      name = "close";
      break;
    default:
      return NULL;
  }
  return strncmp(path, folder, strlen(folder)) == 0 ? name : NULL;
}

static void Enter(struct Thread* thread, pid_t process) {
  struct user_regs_struct regs;
  if (ptrace(PTRACE_GETREGS, thread->id, NULL, &regs) != 0) return;
  char path[kPath];
  const char* const step = Step(thread->id, &regs, path);
  if (step == NULL) return;
  ++num_steps;
  fprintf(record, "%s %s\n", step, path);
  fflush(record);
  const int is_writing = strcmp(step, "write") == 0 || strcmp(step, "create") == 0;
  if (num_steps != fault_at && !(is_full && num_steps > fault_at && is_writing)) return;
  if (is_kill) {
    kill(process, SIGKILL);
  } else if (error_number == 0) {
    if (regs.orig_rax != SYS_write || regs.rdx < 2) return;
    regs.rdx = 1;
    ptrace(PTRACE_SETREGS, thread->id, NULL, &regs);
  } else {
    thread->fault = -error_number;
    if (regs.orig_rax == SYS_close) return; /* a close that fails has closed the file */
    regs.orig_rax = (unsigned long long)-1;
    ptrace(PTRACE_SETREGS, thread->id, NULL, &regs);
  }
}

static void Leave(struct Thread* thread) {
  if (thread->fault == 0) return;
  struct user_regs_struct regs;
  if (ptrace(PTRACE_GETREGS, thread->id, NULL, &regs) == 0) {
    regs.rax = (unsigned long long)thread->fault;
    ptrace(PTRACE_SETREGS, thread->id, NULL, &regs);
  }
  thread->fault = 0;
}

static int Watch(pid_t process) {
  int status;
  if (waitpid(process, &status, 0) != process || !WIFSTOPPED(status)) return kCannotWatch;
  const long options = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL;
  if (ptrace(PTRACE_SETOPTIONS, process, NULL, options) != 0) return kCannotWatch;
  pid_t id = process;
  int signal_number = 0;
  for (;;) {
    ptrace(PTRACE_SYSCALL, id, NULL, (long)signal_number); /* fails for what died meanwhile */
    id = waitpid(-1, &status, __WALL);
    if (id < 0) return kCannotWatch;
    signal_number = 0;
    if (!WIFSTOPPED(status)) {
      if (id == process)
        return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
      Find(id)->id = 0;
      continue;
    }
    if (WSTOPSIG(status) == (SIGTRAP | 0x80)) {
      struct Thread* const thread = Find(id);
      thread->inside = !thread->inside;
      if (thread->inside)
        Enter(thread, process);
      else
        Leave(thread);
    } else if (WSTOPSIG(status) != SIGTRAP && WSTOPSIG(status) != SIGSTOP) {
      signal_number = WSTOPSIG(status);
    }
  }
}

int main(int argc, char** argv) {
  if (argc < 6) return kCannotWatch;
  folder = argv[1];
  record = fopen(argv[2], "w");
  fault_at = atol(argv[3]);
  is_kill = strcmp(argv[4], "kill") == 0;
  is_full = strcmp(argv[4], "full") == 0;
  error_number = is_full ? ENOSPC : atol(argv[4]);
  if (record == NULL) return kCannotWatch;
  const pid_t process = fork();
  if (process == 0) {
    if (ptrace(PTRACE_TRACEME, 0, NULL, NULL) != 0) _exit(kCannotWatch);
    execv(argv[5], argv + 5);
    _exit(kCannotWatch);
  }
  return process < 0 ? kCannotWatch : Watch(process);
}
#else
int main(void) {
  return kCannotWatch;
}
#endif
