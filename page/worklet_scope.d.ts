// The global scope of an audio worklet, which TypeScript's own declarations lack.
declare const sampleRate: number;
declare const currentTime: number;
declare class AudioWorkletProcessor {
  readonly port: MessagePort;
}
declare function registerProcessor(
  name: string,
  processor: new (options: any) => AudioWorkletProcessor,
): void;
