declare module "studio-module" {
  export default function createModule<Library>(options: { wasmBinary: Uint8Array }): Promise<Library>;
}
