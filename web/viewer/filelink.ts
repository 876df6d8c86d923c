import type { CallName, FileCalls, Question, Reply } from "./messages.js";
import { started } from "./workers.js";

/** Why a file's worker could not answer. */
export class FileError extends Error {
  override readonly name = "FileError";
  constructor(
    readonly status: string,
    message: string,
    /** The byte in the file where damage was met. */
    readonly position: number | null,
  ) {
    super(message);
  }
}

/** For the first file; see start.ts. */
let ahead = (window as { zvgWorkerAhead?: Worker }).zvgWorkerAhead;

/** A worker of its own for a file, so that reading holds up neither the page nor another file. */
export class FileLink {
  private readonly worker: Worker;
  private readonly waiting = new Map<number, { settle(reply: Reply): void }>();
  private questions = 0;

  constructor() {
    this.worker = ahead ?? started();
    ahead = undefined;
    this.worker.onmessage = ({ data }: MessageEvent<Reply>) => {
      this.waiting.get(data.id)?.settle(data);
      this.waiting.delete(data.id);
    };
    this.worker.onerror = (event) => {
      const error = { status: "internal", message: event.message, position: null };
      for (const [id, { settle }] of this.waiting) settle({ id, error });
      this.waiting.clear();
    };
  }

  ask<Name extends CallName>(
    call: Name,
    ...args: Parameters<FileCalls[Name]>
  ): Promise<ReturnType<FileCalls[Name]>> {
    return new Promise((resolve, reject) => {
      const question: Question = { id: this.questions++, call, args };
      this.waiting.set(question.id, {
        settle({ value, error }) {
          if (error === undefined) resolve(value as ReturnType<FileCalls[Name]>);
          else reject(new FileError(error.status, error.message, error.position));
        },
      });
      this.worker.postMessage(question);
    });
  }

  close(): void {
    this.worker.terminate();
  }
}
