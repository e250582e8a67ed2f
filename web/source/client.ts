// Calls of the worker from the page.

import type { Calls, CallName, Reply } from "./protocol";

export class Client {
  private readonly worker: Worker;
  private readonly waiting = new Map<number, { resolve: (value: never) => void; reject: (error: Error) => void }>();
  private count = 0;

  constructor(script: string) {
    this.worker = new Worker(URL.createObjectURL(new Blob([script], { type: "text/javascript" })));
    this.worker.onmessage = ({ data }: MessageEvent<Reply>) => {
      const caller = this.waiting.get(data.number);
      this.waiting.delete(data.number);
      if (data.error !== undefined) caller?.reject(new Error(data.error));
      else caller?.resolve(data.result as never);
    };
    this.worker.onerror = (event) => {
      for (const { reject } of this.waiting.values()) reject(new Error(event.message));
      this.waiting.clear();
    };
  }

  call<Name extends CallName>(call: Name, given: Calls[Name]["arguments"]): Promise<Calls[Name]["result"]> {
    return new Promise((resolve, reject) => {
      const number = ++this.count;
      this.waiting.set(number, { resolve, reject });
      this.worker.postMessage({ number, call, arguments: given });
    });
  }
}

/** Runs a task again and again, but never twice at once: of what is asked for meanwhile, only the
 * newest is done. */
export class NewestOnly<T> {
  private running = false;
  private next: T | null = null;

  constructor(private readonly task: (given: T) => Promise<void>) {}

  async ask(given: T): Promise<void> {
    this.next = given;
    if (this.running) return;
    this.running = true;
    try {
      while (this.next !== null) {
        const newest: T = this.next;
        this.next = null;
        await this.task(newest);
      }
    } finally {
      this.running = false;
    }
  }
}
