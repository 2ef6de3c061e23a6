// The worker's bundle, which page.cmake gives to the page's as a text.
declare module 'worker-script' {
  const text: string;
  export default text;
}
