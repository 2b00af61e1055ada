/** What the reply to a click says about the commands that could not be sent. */

/**
 * A line of the reply's message: "<interface>failed to send <command>,reason:<error number><the system's text>", or the
 * same in Chinese. Names can hold anything, so the last place of a line that looks like a reason is the reason.
 */
const failure = /^.*(?:failed to send .*,reason:|发送.*失败,原因:)(\d+)/gm;

/**
 * The error numbers of the commands that could not be sent, each once, in the order of the message.
 *
 * This is the only place that reads the server's sentences. It has to: `code` tells only the kind of the interface that
 * failed last, and the reply carries the error numbers nowhere else.
 */
export function errorNumbers(message: string): number[] {
  return [...new Set([...message.matchAll(failure)].map((match) => Number(match[1])))];
}
